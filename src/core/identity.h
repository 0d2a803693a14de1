// SPDX-License-Identifier: Apache-2.0
// The four identity attributes of components and designs.
#ifndef KALDATA_SRC_CORE_IDENTITY_H
#define KALDATA_SRC_CORE_IDENTITY_H

#include <string>

class kalattributes;

namespace kalidentity {

extern const std::string vendorKey, libraryKey, nameKey, versionKey, spirit;

// Sets "Vendor", "Library", "Name", "Version" in that order, vendor "SPIRIT".
void set(kalattributes& id, const std::string* vendor, const std::string* library, const std::string* name,
         const std::string* version);

// Compares the four values in that order.
bool same(kalattributes& a, kalattributes& b);

}  // namespace kalidentity

#endif
