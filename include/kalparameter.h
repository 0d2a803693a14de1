// A named component parameter with a replaceable value.
#ifndef KALDATA_KALPARAMETER_H
#define KALDATA_KALPARAMETER_H

#include <string>

#include "kalattributes.h"
#include "kalexport.h"

class KALDATA_API kalparameter : public kalattributes {
private:
    std::string* name;
    std::string* secondField;
    std::string* fourthField;
    std::string* value;

public:
    kalparameter(const std::string* name, const std::string* second, const std::string* value,
                 const std::string* fourth);
    void setValue(const std::string* value);
    ~kalparameter();

    const std::string* getName() const;
    const std::string* getSecondField() const;
    const std::string* getFourthField() const;
    const std::string* getValue() const;
};

#endif
