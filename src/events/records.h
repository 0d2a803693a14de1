// SPDX-License-Identifier: Apache-2.0
// One function per kind of record the library sends. Each names the record's
// category, action and keys, and builds the path values only once the service
// has handed out an object: a dropped record costs no strings.
//
// Callers pass what is still alive when the record goes out. Where the change
// frees a name, the caller copies it first and passes the copy.
#ifndef KALDATA_SRC_EVENTS_RECORDS_H
#define KALDATA_SRC_EVENTS_RECORDS_H

#include <string>

class kalcomponent;
class kaldesign;
class kalnet;
class kalport;

namespace kalrecords {

// ---- instances ----

void instanceAdded(const kaldesign* design, const std::string& instanceName);
void instanceRemoved(const kaldesign* design, const std::string& instanceName);

// ---- nets and net buses ----

// A port joined the net; a port of a component that is nobody's instance is
// named as the top port.
void netAdded(const kalnet* net, const kalport* port);
// The net is announced again (its port bus went); the first port on it of a
// component that is nobody's instance is named as the top port.
void netAdded(const kalnet* net);
void netRemoved(const kaldesign* design, const std::string& name);
void netRenamed(const kaldesign* design, const std::string& from, const std::string& to);
void netbusRemoved(const kaldesign* design, const std::string& name);
void netbusRenamed(const kaldesign* design, const std::string& from, const std::string& to);

// The port left the net.
void portLeftNet(const kalnet* net, const kalport* port);

// ---- component ports ----

void portRemoved(const kalcomponent* owner, const std::string& name);
void portRenamed(const kalcomponent* owner, const std::string& from, const std::string& to);
void portbusRemoved(const kalcomponent* owner, const std::string& name);
void portbusRenamed(const kalcomponent* owner, const std::string& from, const std::string& to);

// ---- exports ----

// `path` is the inner port (bus) as the caller named it; the top port and the
// net (bus) share `topName`, the top port in `enclosing`, the net in `design`.
void portExported(const std::string& path, const kalcomponent* enclosing, const kaldesign* design,
                  const std::string& topName);
void portbusExported(const std::string& path, const kalcomponent* enclosing, const kaldesign* design,
                     const std::string& topName);

// The export of `portName` to the top port `topName` of `topOwner` was undone.
// The top port is named only when it had an owner. The net is named only when
// `netGone`; `hadNet` false names it as "".
void portUnexported(const std::string& portName, const kalcomponent* topOwner, const std::string& topName,
                    const kaldesign* netDesign, bool hadNet, bool netGone);
// The same for a port bus whose top bus `topName` sits in `topOwner`; the net
// bus is named only when all its bits went.
void portbusUnexported(const std::string& busName, const kalcomponent* topOwner, const std::string& topName,
                       const kaldesign* netbusDesign, bool netbusGone);

// ---- dual ports ----
// These go out only for a design that a component holds; for any other the
// record is created and left unsent, as the service expects.

void dualPortAdded(const kaldesign* design, const std::string& name);
void dualPortbusAdded(const kaldesign* design, const std::string& name);
// `port` left the dual port `name`; the dual port is named by the net it was
// on when there is one.
void dualPortLostPort(const kaldesign* design, const std::string& name, const kalnet* net,
                      const kalport* port);
void dualPortbusRemoved(const kaldesign* design, const std::string& name);

}  // namespace kalrecords

#endif
