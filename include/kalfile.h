// Files and the file sets that own them.
#ifndef KALDATA_KALFILE_H
#define KALDATA_KALFILE_H

#include <string>
#include <vector>

#include "kalattributes.h"
#include "kalexport.h"

class kalcomponent;

class KALDATA_API kalfile : public kalattributes {
private:
    std::string* name;
    std::string* secondField;
    std::string* thirdField;

public:
    kalfile(const std::string* name, const std::string* second, const std::string* third);
    bool operator==(const kalfile& other) const;
    bool operator!=(const kalfile& other) const;
    ~kalfile();

    const std::string* getName() const;
    const std::string* getSecondField() const;
    const std::string* getThirdField() const;
};

class KALDATA_API kalfileset : public kalattributes {
private:
    kalcomponent* owner;
    std::string* name;
    std::string* secondField;
    std::string* thirdField;
    void* reserved;
    std::vector<kalfile*>* files;

public:
    kalfileset(const std::string* name, const std::string* second, const std::string* third);
    // Owns the file from now on; adding one file twice makes the set free it twice.
    void addFile(const std::string* key, kalfile* file);
    ~kalfileset();

    kalcomponent* getOwner() const;
    const std::string* getName() const;
    const std::string* getSecondField() const;
    const std::string* getThirdField() const;
    std::vector<kalfile*> getFiles() const;
    void setOwner(kalcomponent* owner);
};

#endif
