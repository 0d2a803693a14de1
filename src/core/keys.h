// SPDX-License-Identifier: Apache-2.0
// Names the model itself builds and looks things up by: a dual port's member
// keys and the default name of an exported port. Record paths reuse these
// where their formats coincide, so each format is written once.
#ifndef KALDATA_SRC_CORE_KEYS_H
#define KALDATA_SRC_CORE_KEYS_H

#include <string>

class kalcomponent;
class kalport;

namespace kalkeys {

// The component's instance name, or "" when it has none.
std::string instanceName(const kalcomponent* component);

// "u1/A": the owner's instance name, "/", the port's name.
std::string memberName(const kalcomponent* owner, const std::string& name);
std::string memberName(const kalport* port);

// "u1_A": the name an export gives the top port when the caller names none.
std::string exportName(const kalcomponent* inner, const std::string& innerName);

}  // namespace kalkeys

#endif
