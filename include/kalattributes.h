// SPDX-License-Identifier: Apache-2.0
// Name/value store carried by every named object of the model.
#ifndef KALDATA_KALATTRIBUTES_H
#define KALDATA_KALATTRIBUTES_H

#include <map>
#include <string>

#include "kalexport.h"

class kalattributes {
private:
    // The value map and the vendor map, made together on the first write.
    struct maps;
    maps* values;

public:
    KALDATA_API kalattributes();
    KALDATA_API kalattributes(const kalattributes& other);
    KALDATA_API ~kalattributes();

    KALDATA_API int hasAttribute(const std::string* name);
    KALDATA_API const std::string* getAttributeValue(const std::string* name);
    // Returns the attribute's value, not its vendor tag (kept for compatibility).
    KALDATA_API const std::string* getAttributeVendor(const std::string* name);
    KALDATA_API const std::string* getVendor();
    KALDATA_API const std::string* getLibrary();
    KALDATA_API const std::string* getName();
    KALDATA_API const std::string* getVersion();
    KALDATA_API void setAttribute(const std::string* name, const std::string* value,
                                  const std::string* vendor);
    KALDATA_API void setAttributeValue(const std::string* name, const std::string* value);
    KALDATA_API void removeAttribute(const std::string* name);
    KALDATA_API void removeAllAttributes();
    KALDATA_API void copyAttributesFrom(const kalattributes& other);

    KALDATA_API std::map<std::string, std::string> getValueMap() const;
    KALDATA_API std::map<std::string, std::string> getVendorMap() const;
};

#endif
