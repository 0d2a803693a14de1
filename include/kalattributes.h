// SPDX-License-Identifier: Apache-2.0
/// @file kalattributes.h
/// @brief Name/value store carried by every named object of the model.
#ifndef KALDATA_KALATTRIBUTES_H
#define KALDATA_KALATTRIBUTES_H

#include <map>
#include <string>

#include "kalexport.h"

/// @brief A set of named attributes: a value map and, beside it, a vendor map.
///
/// Every named object of the model derives from it, and a component's or a
/// design's identity ("Vendor", "Library", "Name", "Version", vendor tag
/// "SPIRIT") is one. The value map alone decides whether an attribute exists;
/// the vendor map is written alongside but not kept in step: removing an
/// attribute leaves its vendor entry, and setAttribute() does not overwrite a
/// vendor entry left behind that way.
///
/// All names and values are passed as pointers to strings that the set copies;
/// a null pointer means "not given": queries answer null or 0, changes do
/// nothing. String results point into the set's own storage: they are for
/// reading and stay valid until the attribute is changed or removed, or the
/// set is destroyed.
///
/// Copying: the copy constructor copies both maps deeply. The assignment
/// operator is the compiler's and shares the maps, so assigning one set to
/// another frees them twice: do not assign.
class kalattributes {
private:
    // The value map and the vendor map, made together on the first write.
    struct maps;
    maps* values;

public:
    /// An empty set.
    KALDATA_API kalattributes();
    /// A deep copy of @p other's value and vendor maps.
    KALDATA_API kalattributes(const kalattributes& other);
    /// Frees both maps.
    KALDATA_API ~kalattributes();

    /// @return 1 when the value map holds @p name, else 0 (also for null).
    KALDATA_API int hasAttribute(const std::string* name);
    /// @return the value of @p name, or null when it is missing or @p name is null.
    KALDATA_API const std::string* getAttributeValue(const std::string* name);
    /// Returns the attribute's **value**, not its vendor tag (kept for compatibility;
    /// read the vendor tag through getVendorMap()).
    /// @return the value of @p name, or null when it is missing or @p name is null.
    KALDATA_API const std::string* getAttributeVendor(const std::string* name);
    /// @return the value of the attribute "Vendor", or null.
    KALDATA_API const std::string* getVendor();
    /// @return the value of the attribute "Library", or null.
    KALDATA_API const std::string* getLibrary();
    /// @return the value of the attribute "Name", or null. Classes with a name of
    /// their own hide this with their own getName(); reach it through a
    /// `kalattributes&` or getAttributeValue().
    KALDATA_API const std::string* getName();
    /// @return the value of the attribute "Version", or null.
    KALDATA_API const std::string* getVersion();
    /// Sets @p name to @p value with the vendor tag @p vendor, replacing an
    /// existing attribute of that name (value and vendor). Does nothing when any
    /// argument is null. A vendor entry that outlived its attribute
    /// (removeAttribute()) is not overwritten.
    KALDATA_API void setAttribute(const std::string* name, const std::string* value, const std::string* vendor);
    /// Sets the value of @p name, adding it when missing; the vendor map is not
    /// touched. Does nothing when either argument is null.
    KALDATA_API void setAttributeValue(const std::string* name, const std::string* value);
    /// Removes @p name from the value map (its vendor entry stays). Null: nothing.
    KALDATA_API void removeAttribute(const std::string* name);
    /// Empties both maps.
    KALDATA_API void removeAllAttributes();
    /// Merges @p other into this set: names this set already has keep their
    /// value and vendor; the others are copied. Copying from itself does nothing.
    KALDATA_API void copyAttributesFrom(const kalattributes& other);

    /// @return a copy of the value map (empty when nothing was ever set).
    KALDATA_API std::map<std::string, std::string> getValueMap() const;
    /// @return a copy of the vendor map, stale entries included.
    KALDATA_API std::map<std::string, std::string> getVendorMap() const;
};

#endif
