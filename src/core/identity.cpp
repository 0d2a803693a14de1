// SPDX-License-Identifier: Apache-2.0
#include "core/identity.h"

#include "core/text.h"
#include "kalattributes.h"

namespace kalidentity {

const std::string vendorKey("Vendor"), libraryKey("Library"), nameKey("Name"), versionKey("Version"),
    spirit("SPIRIT");

void set(kalattributes& id, const std::string* vendor, const std::string* library, const std::string* name,
         const std::string* version) {
    id.setAttribute(&vendorKey, vendor, &spirit);
    id.setAttribute(&libraryKey, library, &spirit);
    id.setAttribute(&nameKey, name, &spirit);
    id.setAttribute(&versionKey, version, &spirit);
}

bool same(kalattributes& a, kalattributes& b) {
    for (const std::string* key : {&vendorKey, &libraryKey, &nameKey, &versionKey})
        if (!kaltext::same(a.getAttributeValue(key), b.getAttributeValue(key))) return false;
    return true;
}

}  // namespace kalidentity
