// An LPC value record of a component.
#ifndef KALDATA_KALLPC_H
#define KALDATA_KALLPC_H

#include <string>

#include "kalattributes.h"
#include "kalexport.h"

class KALDATA_API kallpc : public kalattributes {
private:
    std::string value;

public:
    kallpc(std::string value);

    const std::string& getValue() const;
};

#endif
