// SPDX-License-Identifier: Apache-2.0
// Bus-bit names and splitting/joining of hierarchical names.
#ifndef KALDATA_KALUTILITIES_H
#define KALDATA_KALUTILITIES_H

#include <string>
#include <vector>

#include "kalexport.h"

class kalutilities {
public:
    // All results are new objects owned by the caller.
    KALDATA_API static std::string* constructBusBit(const std::string* name, unsigned int index);
    KALDATA_API static std::vector<std::string>* deconstructString(const std::string* text,
                                                                   const std::string* separator);
    KALDATA_API static std::string* reconstructString(const std::vector<std::string>* pieces,
                                                      const std::string* separator);
};

#endif
