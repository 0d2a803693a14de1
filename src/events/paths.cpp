// SPDX-License-Identifier: Apache-2.0
#include "events/paths.h"

#include "core/keys.h"
#include "kalcomponent.h"
#include "kaldesign.h"
#include "kalport.h"

namespace kalpaths {

namespace {

const std::string& text(const std::string* s) {
    static const std::string empty;
    return s ? *s : empty;
}

const std::string& nameAttribute(kalattributes* identity) {
    static const std::string key("Name");
    return text(identity ? identity->getAttributeValue(&key) : nullptr);
}

const kalcomponent* ownerOf(const kaldesign* design) {
    return design ? design->owner : nullptr;
}

std::string join(const std::string& a, const char* sep, const std::string& b) {
    std::string out;
    out.reserve(a.size() + b.size() + 2);
    out.append(a).append(sep).append(b);
    return out;
}

}  // namespace

std::string portPath(const kalcomponent* owner, const std::string& name) {
    return kalkeys::memberName(owner, name);
}

std::string portPath(const kalport* port) {
    return portPath(port->getComponent(), text(port->getName()));
}

std::string portPathInDesign(const kalport* port) {
    const kalcomponent* c = port->getComponent();
    if (!c || !c->parentDesign) return portPath(port);
    return join(kalkeys::instanceName(c->parentDesign->owner), "/", portPath(port));
}

std::string designPortPath(const kalport* port) {
    const kalcomponent* c = port->getComponent();
    if (!c || !c->parentDesign) return portPath(port);
    return designPath(c->parentDesign, portPath(port));
}

std::string designPath(const kaldesign* design, const std::string& name) {
    const std::string& designName = nameAttribute(design ? design->identity : nullptr);
    std::string out = kalkeys::instanceName(ownerOf(design));
    out.append("::").append(designName).append("/").append(name);
    return out;
}

std::string dualPortPath(const kaldesign* design, const std::string& name) {
    const kalcomponent* owner = ownerOf(design);
    std::string out = kalkeys::instanceName(owner);
    out.append("::").append(nameAttribute(owner ? owner->identity : nullptr)).append("/").append(name);
    return out;
}

}  // namespace kalpaths
