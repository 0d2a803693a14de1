// Small IP-XACT documents for the reader's tests, written out in full so that
// each test shows what it feeds the reader.
#ifndef KALDATA_TESTS_IPXACT_DOCS_H
#define KALDATA_TESTS_IPXACT_DOCS_H

#include <string>
#include <utility>
#include <vector>

namespace docs {

inline const char* head(const char* root) {
    static std::string s;
    s = std::string("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ipxact:") + root +
        " xmlns:ipxact=\"http://www.accellera.org/XMLSchema/IPXACT/1685-2014\">\n";
    return s.c_str();
}

inline std::string vlnv(const std::string& name) {
    return "<ipxact:vendor>acme</ipxact:vendor><ipxact:library>ip</ipxact:library><ipxact:name>" + name +
           "</ipxact:name><ipxact:version>1.0</ipxact:version>\n";
}

inline std::string ref(const char* element, const std::string& name, const std::string& inner = "") {
    std::string open = std::string("<ipxact:") + element + " vendor=\"acme\" library=\"ip\" name=\"" + name +
                       "\" version=\"1.0\"";
    return inner.empty() ? open + "/>\n" : open + ">" + inner + "</ipxact:" + element + ">\n";
}

inline std::string port(const std::string& name, const char* dir, const std::string& left = "",
                        const std::string& right = "") {
    std::string v = left.empty() ? ""
                                 : "<ipxact:vectors><ipxact:vector><ipxact:left>" + left +
                                       "</ipxact:left><ipxact:right>" + right +
                                       "</ipxact:right></ipxact:vector></ipxact:vectors>";
    return "<ipxact:port><ipxact:name>" + name + "</ipxact:name><ipxact:wire><ipxact:direction>" + dir +
           "</ipxact:direction>" + v + "</ipxact:wire></ipxact:port>\n";
}

inline std::string param(const std::string& id, const std::string& name, const std::string& value) {
    return "<ipxact:parameter parameterId=\"" + id + "\"><ipxact:name>" + name +
           "</ipxact:name><ipxact:value>" + value + "</ipxact:value></ipxact:parameter>\n";
}

// A component with ports, optional parameters, bus interfaces and a design.
inline std::string component(const std::string& name, const std::string& ports,
                             const std::string& params = "", const std::string& design = "",
                             const std::string& busInterfaces = "") {
    std::string s = head("component") + vlnv(name);
    if (!busInterfaces.empty()) s += "<ipxact:busInterfaces>\n" + busInterfaces + "</ipxact:busInterfaces>\n";
    s += "<ipxact:model>\n";
    if (!design.empty())
        s += "<ipxact:views><ipxact:view><ipxact:name>rtl</ipxact:name><ipxact:designInstantiationRef>d"
             "</ipxact:designInstantiationRef></ipxact:view></ipxact:views>\n"
             "<ipxact:instantiations><ipxact:designInstantiation><ipxact:name>d</ipxact:name>" +
             ref("designRef", design) + "</ipxact:designInstantiation></ipxact:instantiations>\n";
    s += "<ipxact:ports>\n" + ports + "</ipxact:ports>\n</ipxact:model>\n";
    if (!params.empty()) s += "<ipxact:parameters>\n" + params + "</ipxact:parameters>\n";
    return s + "</ipxact:component>\n";
}

// A parameter value that an instance sets, for instance().
inline std::string configured(const std::string& id, const std::string& value) {
    return "<ipxact:configurableElementValue referenceId=\"" + id + "\">" + value +
           "</ipxact:configurableElementValue>";
}

inline std::string instance(const std::string& name, const std::string& comp,
                            const std::string& values = "") {
    std::string inner = values.empty() ? ""
                                       : "<ipxact:configurableElementValues>" + values +
                                             "</ipxact:configurableElementValues>";
    return "<ipxact:componentInstance><ipxact:instanceName>" + name + "</ipxact:instanceName>" +
           ref("componentRef", comp, inner) + "</ipxact:componentInstance>\n";
}

inline std::string adhoc(const std::string& name, const std::string& refs) {
    return "<ipxact:adHocConnection><ipxact:name>" + name + "</ipxact:name><ipxact:portReferences>" + refs +
           "</ipxact:portReferences></ipxact:adHocConnection>\n";
}

inline std::string internal(const std::string& inst, const std::string& port, int left = -1, int right = -1) {
    if (left < 0)
        return "<ipxact:internalPortReference componentRef=\"" + inst + "\" portRef=\"" + port + "\"/>";
    return "<ipxact:internalPortReference componentRef=\"" + inst + "\" portRef=\"" + port +
           "\"><ipxact:partSelect><ipxact:range><ipxact:left>" + std::to_string(left) +
           "</ipxact:left><ipxact:right>" + std::to_string(right) +
           "</ipxact:right></ipxact:range></ipxact:partSelect></ipxact:internalPortReference>";
}

inline std::string external(const std::string& port) {
    return "<ipxact:externalPortReference portRef=\"" + port + "\"/>";
}

inline std::string design(const std::string& name, const std::string& instances, const std::string& adhocs,
                          const std::string& interconnections = "") {
    std::string s = head("design") + vlnv(name) + "<ipxact:componentInstances>\n" + instances +
                    "</ipxact:componentInstances>\n";
    if (!interconnections.empty())
        s += "<ipxact:interconnections>\n" + interconnections + "</ipxact:interconnections>\n";
    if (!adhocs.empty()) s += "<ipxact:adHocConnections>\n" + adhocs + "</ipxact:adHocConnections>\n";
    return s + "</ipxact:design>\n";
}

// Line (1-based) of the first occurrence of `marker` in `text`.
inline unsigned lineOf(const std::string& text, const std::string& marker) {
    std::size_t at = text.find(marker);
    unsigned line = 1;
    for (std::size_t i = 0; i < at && i < text.size(); ++i)
        line += text[i] == '\n';
    return line;
}

}  // namespace docs

#endif
