#include "kalipxact.h"
namespace kalipxact {
writeResult write(kalcomponent*, const std::string&) { writeResult r; r.error.text = "not yet"; return r; }
writeResult writeDocuments(kalcomponent*, std::vector<std::pair<std::string, std::string>>&) { writeResult r; r.error.text = "not yet"; return r; }
}
