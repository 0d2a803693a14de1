// SPDX-License-Identifier: Apache-2.0
// Name storage for the model's many small objects.
//
// Port and port bus names repeat across every instance of a block type, so
// they are kept once in a counted table and shared. Net names are mostly
// unique; a net shares one string between its name and second name while the
// two are equal, which is how nearly every net is made.
#ifndef KALDATA_SRC_CORE_NAMES_H
#define KALDATA_SRC_CORE_NAMES_H

#include <string>

namespace kalnames {

// The shared copy of `text`; every acquire is matched by one release.
const std::string* acquire(const std::string& text);
const std::string* acquireOrNull(const std::string* text);
void release(const std::string* shared);
// Points `field` at the shared copy of `value` (null changes nothing).
void reassign(const std::string*& field, const std::string* value);

// A name pair that shares one owned string while both hold the same text.
void assignPaired(std::string*& field, std::string*& partner, const std::string* value);
void releasePair(std::string*& first, std::string*& second);

}  // namespace kalnames

#endif
