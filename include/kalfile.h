// SPDX-License-Identifier: Apache-2.0
/// @file kalfile.h
/// @brief Files and the file sets that own them.
#ifndef KALDATA_KALFILE_H
#define KALDATA_KALFILE_H

#include <string>
#include <vector>

#include "kalattributes.h"
#include "kalexport.h"

class kalcomponent;

/// @brief A file of a file set: a name, a second field and an optional third field.
///
/// Do not copy or assign one: the copy shares the owned strings, which are then freed twice.
class kalfile : public kalattributes {
private:
    std::string* name;
    std::string* secondField;
    std::string* thirdField;

public:
    /// Copies the strings when @p name and @p second are non-null (a null
    /// @p third becomes ""); otherwise every field stays null.
    KALDATA_API kalfile(const std::string* name, const std::string* second, const std::string* third);
    /// Equal when name and second field are (two null fields are equal); the
    /// third field and the attributes do not count.
    KALDATA_API bool operator==(const kalfile& other) const;
    /// The negation of operator==().
    KALDATA_API bool operator!=(const kalfile& other) const;
    /// Frees the strings.
    KALDATA_API ~kalfile();

    /// @return the name, or null.
    KALDATA_API const std::string* getName() const;
    /// @return the second field, or null.
    KALDATA_API const std::string* getSecondField() const;
    /// @return the third field ("" when given as null), or null when the file has no fields.
    KALDATA_API const std::string* getThirdField() const;
};

/// @brief A named set of files, owned by nobody but its maker.
///
/// kalcomponent::addFileSet() makes and registers one, but the component never
/// frees it: the caller does (kalsupport::release()). The set owns its files.
/// Do not copy or assign one: the copy shares the owned files and strings,
/// which are then freed twice.
class kalfileset : public kalattributes {
private:
    kalcomponent* owner;
    std::string* name;
    std::string* secondField;
    std::string* thirdField;
    void* reserved;
    std::vector<kalfile*>* files;

public:
    /// Copies the strings and makes an empty file list when @p name and
    /// @p second are non-null (a null @p third becomes ""); otherwise the set
    /// has no fields and no file list, and addFile() adds nothing.
    KALDATA_API kalfileset(const std::string* name, const std::string* second, const std::string* third);
    /// Appends @p file; the set owns it from now on. @p key is not used. A null
    /// file, or a set without a file list, adds nothing. Nothing checks for
    /// duplicates: adding one file twice makes the set free it twice.
    KALDATA_API void addFile(const std::string* key, kalfile* file);
    /// Frees the files and the strings.
    KALDATA_API ~kalfileset();

    /// @return the component that registered the set (kalcomponent::addFileSet()), or null.
    KALDATA_API kalcomponent* getOwner() const;
    /// @return the name, or null.
    KALDATA_API const std::string* getName() const;
    /// @return the second field, or null.
    KALDATA_API const std::string* getSecondField() const;
    /// @return the third field ("" when given as null), or null.
    KALDATA_API const std::string* getThirdField() const;
    /// @return the files in order of addition, still owned by the set; empty when there is no file list.
    KALDATA_API std::vector<kalfile*> getFiles() const;

private:
    friend class kalcomponent;
    void setOwner(kalcomponent* owner);
};

#endif
