// SPDX-License-Identifier: Apache-2.0
// Owned optional strings, as the model's name fields hold them.
#ifndef KALDATA_SRC_CORE_TEXT_H
#define KALDATA_SRC_CORE_TEXT_H

#include <string>

namespace kaltext {

inline std::string* copyOf(const std::string* s) {
    return s ? new std::string(*s) : nullptr;
}

// Equal when both are missing or both hold the same text.
inline bool same(const std::string* a, const std::string* b) {
    if (!a || !b) return a == b;
    return *a == *b;
}

inline const std::string& orEmpty(const std::string* s) {
    static const std::string empty;
    return s ? *s : empty;
}

// A copy of a name that may be missing (a port or bus made with a direction
// outside 1..3 has none), passed on as the pointer the API takes: an operation
// given a missing name does nothing. The copy outlives the name's owner.
class copied {
public:
    explicit copied(const std::string* s) : given(s != nullptr), value(s ? *s : std::string()) {}
    const std::string* get() const { return given ? &value : nullptr; }

private:
    bool given;
    std::string value;
};

// Replaces an owned string; null changes nothing. The copy is made first, so
// a value that is the field itself survives.
inline void replace(std::string*& field, const std::string* value) {
    if (!value) return;
    std::string* fresh = new std::string(*value);
    delete field;
    field = fresh;
}

}  // namespace kaltext

#endif
