// SPDX-License-Identifier: Apache-2.0
// A named component parameter with a replaceable value.
#ifndef KALDATA_KALPARAMETER_H
#define KALDATA_KALPARAMETER_H

#include <string>

#include "kalattributes.h"
#include "kalexport.h"

class kalparameter : public kalattributes {
private:
    std::string* name;
    std::string* secondField;
    std::string* fourthField;
    std::string* value;

public:
    KALDATA_API kalparameter(const std::string* name, const std::string* second, const std::string* value,
                             const std::string* fourth);
    KALDATA_API void setValue(const std::string* value);
    KALDATA_API ~kalparameter();

    KALDATA_API const std::string* getName() const;
    KALDATA_API const std::string* getSecondField() const;
    KALDATA_API const std::string* getFourthField() const;
    KALDATA_API const std::string* getValue() const;
};

#endif
