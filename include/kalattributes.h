// Name/value store carried by every named object of the model.
#ifndef KALDATA_KALATTRIBUTES_H
#define KALDATA_KALATTRIBUTES_H

#include <map>
#include <string>

#include "kalexport.h"

class KALDATA_API kalattributes {
private:
    // The value map and the vendor map, made together on the first write.
    struct maps;
    maps* values;

public:
    kalattributes();
    kalattributes(const kalattributes& other);
    ~kalattributes();

    int hasAttribute(const std::string* name);
    const std::string* getAttributeValue(const std::string* name);
    // Returns the attribute's value, not its vendor tag (kept for compatibility).
    const std::string* getAttributeVendor(const std::string* name);
    const std::string* getVendor();
    const std::string* getLibrary();
    const std::string* getName();
    const std::string* getVersion();
    void setAttribute(const std::string* name, const std::string* value, const std::string* vendor);
    void setAttributeValue(const std::string* name, const std::string* value);
    void removeAttribute(const std::string* name);
    void removeAllAttributes();
    void copyAttributesFrom(const kalattributes& other);

    std::map<std::string, std::string> getValueMap() const;
    std::map<std::string, std::string> getVendorMap() const;
};

#endif
