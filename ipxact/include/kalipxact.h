// kaldata-ipxact: IP-XACT (IEEE 1685-2014) interchange for libkaldata models.
//
// The reader takes a folder of IP-XACT documents and a top VLNV and builds the
// whole hierarchy through libkaldata's public interface; the writer turns a
// root component's hierarchy back into documents laid out
// vendor/library/name/version/. Both are callers of the public interface only.
#ifndef KALDATA_KALIPXACT_H
#define KALDATA_KALIPXACT_H

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#if defined(__GNUC__) || defined(__clang__)
#define KALIPXACT_API __attribute__((visibility("default")))
#else
#define KALIPXACT_API
#endif

class kalcomponent;

namespace kalipxact {

// The XML namespace of this library's own vendor extensions: whatever the model
// holds that IP-XACT has no element for (exports, dual ports, free attributes,
// LPC values, ...) is written there, so that write then read gives the same model.
KALIPXACT_API extern const char* const extensionNamespace;

// vendor:library:name:version
struct KALIPXACT_API vlnv {
    std::string vendor, library, name, version;
    std::string str() const;                                // "v:l:n:ver"
    static bool parse(const std::string& text, vlnv& out);  // false unless four non-empty parts
    bool operator<(const vlnv& o) const;
    bool operator==(const vlnv& o) const;
};

// A finding of the reader or writer, located in a document where it can be.
struct KALIPXACT_API message {
    std::string file;   // empty when no document is concerned
    unsigned line = 0;  // 0 when unknown
    std::string text;
    std::string str() const;  // "file:line: text"
};

// Called now and then during a load: a phase name ("scan" per document,
// "resolve" per instances, "connect" per connections, "resolved" once when
// the documents are worked out, "build"), the work done and the total (0
// when unknown).
using progressFn = std::function<void(const char* phase, std::size_t done, std::size_t total)>;

struct KALIPXACT_API loadResult {
    kalcomponent* root = nullptr;   // the caller's; free with kalsupport::release
    bool ok = false;                // false: root is null and nothing was created or sent
    message error;                  // set when !ok
    std::vector<message> warnings;  // what was skipped, with file and line
};

// Loads the hierarchy under `top` (a component, design or design configuration
// VLNV) from every *.xml document below `folder`. Documents are found by their
// VLNV, not by their paths. The whole document set is resolved before the first
// model object is created: a load that fails creates nothing and sends no record.
KALIPXACT_API loadResult load(const std::string& folder, const std::string& top,
                              const progressFn& progress = nullptr);

// The same over documents held in memory: (name used in messages, XML text).
// `maxBits`, when not 0, bounds the port bits and net bits a load may create
// (a load above it fails with a message): for callers that read untrusted text.
KALIPXACT_API loadResult loadDocuments(const std::vector<std::pair<std::string, std::string>>& documents,
                                       const std::string& top, const progressFn& progress = nullptr,
                                       std::size_t maxBits = 0);

struct KALIPXACT_API writeResult {
    bool ok = false;
    message error;
    std::vector<message> warnings;
    std::vector<std::string> files;  // the documents written, in order
};

// Writes the hierarchy below `root` into `folder`: one component document per
// distinct VLNV and one design document per design, each in
// vendor/library/name/version/. Existing files of the same names are replaced.
KALIPXACT_API writeResult write(kalcomponent* root, const std::string& folder);

// The same into memory: (relative path, XML text) per document.
KALIPXACT_API writeResult writeDocuments(kalcomponent* root,
                                         std::vector<std::pair<std::string, std::string>>& documents);


}  // namespace kalipxact

#endif
