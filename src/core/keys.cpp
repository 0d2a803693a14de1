// SPDX-License-Identifier: Apache-2.0
#include "core/keys.h"

#include "core/text.h"
#include "kalcomponent.h"
#include "kalport.h"

namespace kalkeys {

namespace {
std::string join(const std::string& a, char sep, const std::string& b) {
    std::string out;
    out.reserve(a.size() + b.size() + 1);
    out.append(a).push_back(sep);
    out.append(b);
    return out;
}
}  // namespace

std::string instanceName(const kalcomponent* component) {
    return component && component->data ? kaltext::orEmpty(component->data->instanceName) : std::string();
}

std::string memberName(const kalcomponent* owner, const std::string& name) {
    return join(instanceName(owner), '/', name);
}

std::string memberName(const kalport* port) {
    return memberName(port->getComponent(), kaltext::orEmpty(port->getName()));
}

std::string exportName(const kalcomponent* inner, const std::string& innerName) {
    return join(instanceName(inner), '_', innerName);
}

}  // namespace kalkeys
