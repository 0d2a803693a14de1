// Small helpers over pugixml shared by the reader and the writer.
#ifndef KALIPXACT_XML_H
#define KALIPXACT_XML_H

#include <pugixml.hpp>

#include <cstring>
#include <string>

namespace kalipxact {
namespace detail {

inline const char* ipxactNamespace() {
    return "http://www.accellera.org/XMLSchema/IPXACT/1685-2014";
}

// The prefix (with its colon, or empty for the default namespace) bound to
// `uri` where `n` stands; false when the namespace is not in scope there.
inline bool prefixOf(pugi::xml_node n, const char* uri, std::string& prefix) {
    for (; n; n = n.parent()) {
        for (pugi::xml_attribute a = n.first_attribute(); a; a = a.next_attribute()) {
            const char* an = a.name();
            if (std::strcmp(a.value(), uri) != 0) continue;
            if (std::strcmp(an, "xmlns") == 0) {
                prefix.clear();
                return true;
            }
            if (std::strncmp(an, "xmlns:", 6) == 0) {
                prefix = std::string(an + 6) + ":";
                return true;
            }
        }
    }
    return false;
}

// The namespace URI of an element's name, from the declarations in scope.
inline std::string namespaceOf(pugi::xml_node n) {
    const char* name = n.name();
    const char* colon = std::strchr(name, ':');
    std::string attr = colon ? "xmlns:" + std::string(name, colon) : std::string("xmlns");
    for (pugi::xml_node p = n; p; p = p.parent())
        if (pugi::xml_attribute a = p.attribute(attr.c_str())) return a.value();
    return std::string();
}

inline const char* localName(const char* name) {
    const char* colon = std::strchr(name, ':');
    return colon ? colon + 1 : name;
}

inline std::string trimmed(const char* s) {
    std::string t(s);
    std::size_t a = t.find_first_not_of(" \t\r\n"), b = t.find_last_not_of(" \t\r\n");
    return a == std::string::npos ? std::string() : t.substr(a, b - a + 1);
}

}  // namespace detail
}  // namespace kalipxact

#endif
