// SPDX-License-Identifier: Apache-2.0
// An LPC value record of a component.
#ifndef KALDATA_KALLPC_H
#define KALDATA_KALLPC_H

#include <string>

#include "kalattributes.h"
#include "kalexport.h"

class kallpc : public kalattributes {
private:
    std::string value;

public:
    KALDATA_API kallpc(std::string value);

    KALDATA_API const std::string& getValue() const;
};

#endif
