// SPDX-License-Identifier: Apache-2.0
/// @file kalparameter.h
/// @brief A named component parameter with a replaceable value.
#ifndef KALDATA_KALPARAMETER_H
#define KALDATA_KALPARAMETER_H

#include <string>

#include "kalattributes.h"
#include "kalexport.h"

/// @brief A component parameter: a name, two further fields and a value.
///
/// A component owns the parameters added to it (kalcomponent::addParameter())
/// until kalcomponent::removeParameter() hands one back.
/// Do not copy or assign one: the copy shares the owned strings, which are then freed twice.
class kalparameter : public kalattributes {
private:
    std::string* name;
    std::string* secondField;
    std::string* fourthField;
    std::string* value;

public:
    /// Copies all four strings, but only when all four pointers are non-null;
    /// otherwise every field stays null. Note the order: the value is the third argument.
    KALDATA_API kalparameter(const std::string* name, const std::string* second, const std::string* value,
                             const std::string* fourth);
    /// Replaces the value with a copy of @p value; null changes nothing.
    KALDATA_API void setValue(const std::string* value);
    /// Frees the four strings.
    KALDATA_API ~kalparameter();

    /// @return the name, or null when the constructor got a null argument.
    KALDATA_API const std::string* getName() const;
    /// @return the second field, or null.
    KALDATA_API const std::string* getSecondField() const;
    /// @return the fourth field, or null.
    KALDATA_API const std::string* getFourthField() const;
    /// @return the value, or null.
    KALDATA_API const std::string* getValue() const;
};

#endif
