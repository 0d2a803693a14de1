// SPDX-License-Identifier: Apache-2.0
/// @file kalutilities.h
/// @brief Bus-bit names and splitting/joining of hierarchical names.
#ifndef KALDATA_KALUTILITIES_H
#define KALDATA_KALUTILITIES_H

#include <string>
#include <vector>

#include "kalexport.h"

/// @brief String helpers used for bus-bit names and "/"-separated paths.
///
/// Every result is a new object owned by the caller (free it with `delete`).
class kalutilities {
public:
    /// The bus-bit name `name[index]`, for example "data[7]".
    /// @param name the bus name; null gives "[index]".
    /// @param index the bit number, any unsigned 32-bit value.
    /// @return a new string, owned by the caller; never null.
    KALDATA_API static std::string* constructBusBit(const std::string* name, unsigned int index);
    /// Splits @p text at every occurrence of @p separator, keeping empty pieces
    /// ("a//b" by "/" gives "a", "", "b"). An empty separator gives the whole text
    /// as one piece.
    /// @return a new vector owned by the caller, or null when either argument is null.
    KALDATA_API static std::vector<std::string>* deconstructString(const std::string* text,
                                                                   const std::string* separator);
    /// Joins @p pieces with @p separator between them (no separator when it is null).
    /// @return a new string owned by the caller; empty when @p pieces is null; never null.
    KALDATA_API static std::string* reconstructString(const std::vector<std::string>* pieces,
                                                      const std::string* separator);
};

#endif
