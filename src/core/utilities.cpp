// SPDX-License-Identifier: Apache-2.0
#include "kalutilities.h"

#include "connectivity/bits.h"

std::string* kalutilities::constructBusBit(const std::string* name, unsigned int index) {
    auto* out = new std::string();
    kalbits::nameBit(*out, name ? *name : std::string(), index);
    return out;
}

std::vector<std::string>* kalutilities::deconstructString(const std::string* text,
                                                          const std::string* separator) {
    if (!text || !separator) return nullptr;
    auto* pieces = new std::vector<std::string>();
    std::size_t pos = 0;
    for (;;) {
        std::size_t hit = separator->empty() ? std::string::npos : text->find(*separator, pos);
        if (hit == std::string::npos) {
            pieces->push_back(text->substr(pos));
            return pieces;
        }
        pieces->push_back(text->substr(pos, hit - pos));
        pos = hit + separator->size();
    }
}

std::string* kalutilities::reconstructString(const std::vector<std::string>* pieces,
                                             const std::string* separator) {
    auto* out = new std::string();
    if (!pieces) return out;
    for (std::size_t i = 0; i < pieces->size(); ++i) {
        if (i && separator) out->append(*separator);
        out->append((*pieces)[i]);
    }
    return out;
}
