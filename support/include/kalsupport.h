// kaldata-support: what every application of libkaldata needs beside the
// model itself. A component never frees the objects that its caller made for it
// (file sets, generator registry and generators), so tearing down a tree is a
// walk of its own; and a model built by hand or by a loader is best checked
// link by link before it is trusted.
#ifndef KALDATA_KALSUPPORT_H
#define KALDATA_KALSUPPORT_H

#include <string>
#include <vector>

#if defined(__GNUC__) || defined(__clang__)
#define KALSUPPORT_API __attribute__((visibility("default")))
#else
#define KALSUPPORT_API
#endif

class kalcomponent;

namespace kalsupport {

// Walks everything reachable from a root component through the public
// interface and answers every broken link, each as one line with a readable
// path. An empty answer means the model is consistent.
KALSUPPORT_API std::vector<std::string> checkModel(kalcomponent* root);

// Destroys the component (which must be nobody's instance, or already taken
// out of its design) and then everything the tree below it left to its caller.
KALSUPPORT_API void release(kalcomponent* root);

// Frees only what the component and its instances leave to the caller; for a
// component that its design destroys itself.
KALSUPPORT_API void releaseLeftovers(kalcomponent* component);

// The model below a root component as deterministic text, one line per
// component, design, instance, parameter, file set, generator, LPC value,
// port, port bus, net (with its connected ports), net bus, dual port and
// element catalogue entry, with exports and attributes: equal models give
// equal text.
KALSUPPORT_API std::string dumpModel(kalcomponent* root);

}  // namespace kalsupport

#endif
