// SPDX-License-Identifier: Apache-2.0
// Ports, port buses and the free port queries that look through dual ports.
#ifndef KALDATA_KALPORT_H
#define KALDATA_KALPORT_H

#include <string>
#include <vector>

#include "kalattributes.h"
#include "kalexport.h"

class kalcomponent;
class kalnet;
class kalnetbus;
class kaldualport;
class kalportbus;
struct kalaccess;

class kalport : public kalattributes {
private:
    kalcomponent* component;
    const std::string* name;  // shared with every equal port name
    kalportbus* bus;
    kalnet* net;
    int direction;
    // The second name where it differs from the name, the text, the export
    // partners and the dual port: few ports have any, so they live apart.
    struct extras;
    extras* extra;

public:
    KALDATA_API kalport(const std::string* name, const std::string* secondName, int direction,
                        const std::string* text);
    KALDATA_API void setBus(kalportbus* bus);
    KALDATA_API void unsetBus();
    KALDATA_API kaldualport* getDualPort();
    KALDATA_API void connect(kalnet* net);
    KALDATA_API void disconnect(kalnet* net);
    KALDATA_API bool exportTo(kalport* port);
    KALDATA_API void unexport();
    KALDATA_API kalport* getExportedFrom();
    KALDATA_API kalport* getExportedTo();
    KALDATA_API std::vector<kalport*> getConnectedPorts();
    KALDATA_API std::vector<kalport*> getPortsOfDualPort();
    KALDATA_API bool operator==(const kalport& other) const;
    KALDATA_API bool operator!=(const kalport& other) const;
    KALDATA_API ~kalport();

    KALDATA_API kalcomponent* getComponent() const;
    KALDATA_API const std::string* getName() const;
    KALDATA_API const std::string* getSecondName() const;
    KALDATA_API const std::string* getText() const;
    KALDATA_API kalportbus* getBus() const;
    KALDATA_API kalnet* getNet() const;
    KALDATA_API int getDirection() const;

private:
    // Link and key updates belong to the library so that both ends stay in step.
    friend struct kalaccess;
    void setComponent(kalcomponent* component);
    void setName(const std::string* name);
    void setSecondName(const std::string* secondName);
    void setDualPort(kaldualport* dualPort);
    extras& more();
    void storeNames(const std::string* name, const std::string* secondName);
};

class kalportbus : public kalattributes {
private:
    kalcomponent* component;
    const std::string* name;  // shared with every equal port name
    const std::string* secondName;
    std::string* text;
    std::vector<kalport*>* bits;
    int direction;
    unsigned int msb;
    unsigned int lsb;

public:
    KALDATA_API kalportbus(const std::string* name, const std::string* secondName, unsigned int msb,
                           unsigned int lsb, int direction, const std::string* text);
    KALDATA_API kalport* portAtIndex(unsigned int i);
    KALDATA_API void connect(unsigned int i, kalport* port);
    KALDATA_API void disconnect(unsigned int i);
    KALDATA_API void disconnect(kalport* port);
    KALDATA_API bool hasConnectedPort();
    KALDATA_API kalnetbus* getConnectedNetbus();
    KALDATA_API bool connectToNetbus(kalnetbus* netbus);
    KALDATA_API void exportTo(kalportbus* portbus);
    KALDATA_API void unexport();
    KALDATA_API kalportbus* getExportedToBus();
    KALDATA_API void setAttribute(const std::string* name, const std::string* value,
                                  const std::string* vendor, bool propagate);
    KALDATA_API void setAttributeValue(const std::string* name, const std::string* value, bool propagate);
    KALDATA_API void removeAttribute(const std::string* name, bool propagate);
    KALDATA_API void removeAllAttributes(bool propagate);
    KALDATA_API ~kalportbus();

    KALDATA_API kalcomponent* getComponent() const;
    KALDATA_API const std::string* getName() const;
    KALDATA_API const std::string* getSecondName() const;
    KALDATA_API const std::string* getText() const;
    KALDATA_API std::vector<kalport*> getBits() const;
    KALDATA_API int getDirection() const;
    KALDATA_API unsigned int getMsb() const;
    KALDATA_API unsigned int getLsb() const;

private:
    friend struct kalaccess;
    void setComponent(kalcomponent* component);
    void setName(const std::string* name);
    void setSecondName(const std::string* secondName);
    void clearBits();
};

KALDATA_API bool isPadPin(kalport* port);
KALDATA_API bool isPadPinBus(kalportbus* portbus);
KALDATA_API bool isPortOrDualPortConnected(kalport* port);
KALDATA_API kalnet* getNetConnectedToPortOrDualPort(kalport* port);
KALDATA_API kalport* getExportedToOfPortOrDualPort(kalport* port);
KALDATA_API bool isDualPort(kalport* port);
KALDATA_API bool isDualPortbus(kalportbus* portbus);
KALDATA_API kalnetbus* getNetbusConnectedToPortbusOrDualPortbus(kalportbus* portbus);
KALDATA_API bool hasPortBitConnectedToPortbusOrDualPortbus(kalportbus* portbus);

#endif
