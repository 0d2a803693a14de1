// SPDX-License-Identifier: Apache-2.0
// Builders for the path strings that fill record values. Every path that a
// record carries is made here, so that the formats live in one place.
#ifndef KALDATA_SRC_EVENTS_PATHS_H
#define KALDATA_SRC_EVENTS_PATHS_H

#include <string>

class kalcomponent;
class kaldesign;
class kalport;

namespace kalpaths {

// "u1/a": owner's instanceName + "/" + name, the format of a dual port's
// member key.
std::string portPath(const kalcomponent* owner, const std::string& name);
std::string portPath(const kalport* port);

// "top/u1/a": the port path prefixed with the instanceName of the component
// whose design holds the port's component; the plain port path when that
// component is nobody's instance.
std::string portPathInDesign(const kalport* port);

// "top::rtl/u1/a": the port path prefixed with the design path prefix of the
// design that holds the port's component; the plain port path when that
// component is nobody's instance.
std::string designPortPath(const kalport* port);

// "top::rtl/n1": owner's instanceName + "::" + design "Name" + "/" + name.
std::string designPath(const kaldesign* design, const std::string& name);

// "top::top/dp0": like a design path, but with the owner component's own
// "Name" in place of the design's.
std::string dualPortPath(const kaldesign* design, const std::string& name);

}  // namespace kalpaths

#endif
