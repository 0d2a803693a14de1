// libFuzzer target over IP-XACT document text. An input is one or more
// documents separated by a line "=====" (a hierarchy needs several); the top is
// the VLNV of the first document. Every load must either fail cleanly (no
// record sent, no model) or give a model that the checker accepts, that the
// writer can write, and whose written documents read back to the same model.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "kaldata.h"
#include "kalipxact.h"
#include "kalrecorder.h"
#include "kalsupport.h"

namespace {

[[noreturn]] void die(const std::string& what) {
    std::fprintf(stderr, "ipxact fuzzer: %s\n", what.c_str());
    std::abort();
}

std::string between(const std::string& text, const std::string& open, const std::string& close) {
    std::size_t a = text.find(open);
    if (a == std::string::npos) return std::string();
    a += open.size();
    std::size_t b = text.find(close, a);
    return b == std::string::npos ? std::string() : text.substr(a, b - a);
}

// Bounds what one input may make, so that a short text cannot ask for gigabytes.
const std::size_t maxBits = 1u << 16;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string input(reinterpret_cast<const char*>(data), size);
    std::vector<std::pair<std::string, std::string>> docs;
    std::size_t start = 0;
    while (docs.size() < 16) {
        std::size_t sep = input.find("\n=====\n", start);
        docs.push_back({"doc" + std::to_string(docs.size()) + ".xml", input.substr(start, sep - start)});
        if (sep == std::string::npos) break;
        start = sep + 7;
    }
    // The first document's VLNV, with or without the ipxact: prefix.
    const std::string& first = docs[0].second;
    std::string top;
    for (const char* key : {"vendor", "library", "name", "version"}) {
        std::string v = between(first, std::string("<ipxact:") + key + ">", "<");
        if (v.empty()) v = between(first, std::string("<") + key + ">", "<");
        top += (top.empty() ? "" : ":") + v;
    }

    kalrecorder::clear();
    kalrecorder::setKeepRecords(false);
    kalrecorder::setNullObjects(false);
    kalipxact::loadResult r = kalipxact::loadDocuments(docs, top, nullptr, maxBits);
    if (!r.ok) {
        if (r.root) die("a failed load returned a model");
        if (kalrecorder::createCalls() != 0) die("a failed load sent records: " + r.error.str());
        return 0;
    }
    kalrecorder::setNullObjects(true);
    for (const std::string& problem : kalsupport::checkModel(r.root))
        die("model checker: " + problem);
    std::string before = kalsupport::dumpModel(r.root);
    std::vector<std::pair<std::string, std::string>> written;
    kalipxact::writeResult w = kalipxact::writeDocuments(r.root, written);
    if (w.ok && w.warnings.empty()) {
        // The written set, the design documents included, read back from the root's VLNV.
        kalipxact::loadResult again = kalipxact::loadDocuments(written, top, nullptr, 4 * maxBits);
        if (!again.ok) die("written documents do not read back: " + again.error.str());
        std::string after = kalsupport::dumpModel(again.root);
        if (after != before) {
            if (std::getenv("KALDATA_FUZZ_TRACE")) {  // the first differing line of each
                std::size_t i = 0;
                while (i < before.size() && i < after.size() && before[i] == after[i])
                    ++i;
                std::size_t from = before.rfind('\n', i) + 1;
                std::fprintf(stderr, "read:    %s\nwritten: %s\n",
                             before.substr(from, before.find('\n', i) - from).c_str(),
                             after.substr(from, after.find('\n', i) - from).c_str());
            }
            die("written documents read back to another model");
        }
        kalsupport::release(again.root);
    }
    kalsupport::release(r.root);
    kalrecorder::clear();
    return 0;
}
