// SPDX-License-Identifier: Apache-2.0
// Files and the file sets that own them.
#ifndef KALDATA_KALFILE_H
#define KALDATA_KALFILE_H

#include <string>
#include <vector>

#include "kalattributes.h"
#include "kalexport.h"

class kalcomponent;

class kalfile : public kalattributes {
private:
    std::string* name;
    std::string* secondField;
    std::string* thirdField;

public:
    KALDATA_API kalfile(const std::string* name, const std::string* second, const std::string* third);
    KALDATA_API bool operator==(const kalfile& other) const;
    KALDATA_API bool operator!=(const kalfile& other) const;
    KALDATA_API ~kalfile();

    KALDATA_API const std::string* getName() const;
    KALDATA_API const std::string* getSecondField() const;
    KALDATA_API const std::string* getThirdField() const;
};

class kalfileset : public kalattributes {
private:
    kalcomponent* owner;
    std::string* name;
    std::string* secondField;
    std::string* thirdField;
    void* reserved;
    std::vector<kalfile*>* files;

public:
    KALDATA_API kalfileset(const std::string* name, const std::string* second, const std::string* third);
    // Owns the file from now on; adding one file twice makes the set free it twice.
    KALDATA_API void addFile(const std::string* key, kalfile* file);
    KALDATA_API ~kalfileset();

    KALDATA_API kalcomponent* getOwner() const;
    KALDATA_API const std::string* getName() const;
    KALDATA_API const std::string* getSecondField() const;
    KALDATA_API const std::string* getThirdField() const;
    KALDATA_API std::vector<kalfile*> getFiles() const;

private:
    friend class kalcomponent;
    void setOwner(kalcomponent* owner);
};

#endif
