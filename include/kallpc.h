// SPDX-License-Identifier: Apache-2.0
/// @file kallpc.h
/// @brief An LPC value record of a component.
#ifndef KALDATA_KALLPC_H
#define KALDATA_KALLPC_H

#include <string>

#include "kalattributes.h"
#include "kalexport.h"

/// @brief An LPC value record: a value, and attributes that name what it applies to.
///
/// kalcomponent::addLPC() keeps a pointer to it but never frees it: the caller
/// does (kalsupport::release() frees the records of a whole tree, so records
/// given to a component must then come from `new`). Copy construction is safe
/// (the attributes are copied deeply); assignment is not.
class kallpc : public kalattributes {
private:
    std::string value;

public:
    /// A record holding @p value and no attributes.
    KALDATA_API kallpc(std::string value);

    /// @return the value given to the constructor.
    KALDATA_API const std::string& getValue() const;
};

#endif
