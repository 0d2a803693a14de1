// SPDX-License-Identifier: Apache-2.0
/// @file kalverify.h
/// @brief A check of the bookkeeping that the public interface cannot see.
#ifndef KALDATA_KALVERIFY_H
#define KALDATA_KALVERIFY_H

#include <string>
#include <vector>

#include "kalexport.h"

class kalcomponent;

/// @brief Checks the library's hidden state under a component, for tests,
/// fuzzers and debug builds of applications.
///
/// The library keeps indexes beside the public containers (over each design's
/// net map, instance map and instance list, and over the port lists of large
/// nets) and side records that pair objects whose links the public interface
/// can change one end at a time (bus slots and bus links, nets that list a port
/// whose link moved on, equal twins a net took off its list, the dual ports
/// that list a port, what a design handed back, nets no key reaches). model()
/// walks everything reachable from the root through the owning containers and
/// checks that each index gives the answer of a plain scan and that every pair
/// agrees from both ends. It reads every object it reaches, so an object freed
/// too early shows under a memory checker.
///
/// The walk is linear in the model's size and changes nothing observable (a
/// stale index is left for the next lookup to rebuild).
class kalverify {
public:
    /// @return one line per inconsistency found under @p root (null: none);
    ///         empty when the bookkeeping agrees with the links.
    KALDATA_API static std::vector<std::string> model(kalcomponent* root);
};

#endif
