// SPDX-License-Identifier: Apache-2.0
/// @file kalsupport.h
/// @brief kaldata-support (`kaldata::support`, pkg-config `kaldata-support`):
/// what every application of libkaldata needs beside the model itself.
// A component never frees the objects that its caller made for it
// (file sets, generator registry and generators), so tearing down a tree is a
// walk of its own; and a model built by hand or by a loader is best checked
// link by link before it is trusted.
#ifndef KALDATA_KALSUPPORT_H
#define KALDATA_KALSUPPORT_H

#include <string>
#include <vector>

/// Marks the support library's exported functions.
#if defined(__GNUC__) || defined(__clang__)
#define KALSUPPORT_API __attribute__((visibility("default")))
#else
#define KALSUPPORT_API
#endif

class kalcomponent;

/// Teardown helper and model checker.
namespace kalsupport {

/// Walks everything reachable from @p root through the public interface and
/// answers every broken link (a port and its net, bus, dual port or export
/// partner that do not point back, a map key unlike the object's name, ...),
/// each as one line with a readable path. An empty answer means the model is
/// consistent. Reads only; sends no records.
KALSUPPORT_API std::vector<std::string> checkModel(kalcomponent* root);

/// Destroys @p root (which must be nobody's instance, or already taken out of
/// its design) and then frees everything that the components of its tree leave
/// to their caller: generator registries with their generators and generator
/// groups, file sets with their files, LPC records and the groups of the
/// element catalogues. Each object is freed once, however many entries name
/// it; so every one of them must come from `new` and be referenced by no
/// other tree. Sends the records that destroying the tree sends (none for a
/// root). Null does nothing.
KALSUPPORT_API void release(kalcomponent* root);

/// Frees only what @p component and the components below it leave to the
/// caller (as release() lists), for a component that its design is about to
/// destroy (kaldesign::removeInstance(), kalcomponent::removeComponent()).
/// Afterwards the components hold no file sets, LPC records, catalogue groups
/// or generator registry (the pointer is null): destroy them, do not use them.
/// Null does nothing.
KALSUPPORT_API void releaseLeftovers(kalcomponent* component);

/// The model below @p root as deterministic text, one indented line per
/// component, design, instance, parameter, file set, file, generator, LPC value,
/// port, port bus, net (with its connected ports, sorted), net bus, dual port,
/// dual port bus and element catalogue entry, with exports and attributes, every
/// map in name order: equal models give equal text. Reads only; sends no
/// records. Null gives "".
KALSUPPORT_API std::string dumpModel(kalcomponent* root);

}  // namespace kalsupport

#endif
