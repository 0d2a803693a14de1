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

class KALDATA_API kalport : public kalattributes {
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
    kalport(const std::string* name, const std::string* secondName, int direction, const std::string* text);
    void setBus(kalportbus* bus);
    void unsetBus();
    kaldualport* getDualPort();
    void connect(kalnet* net);
    void disconnect(kalnet* net);
    bool exportTo(kalport* port);
    void unexport();
    kalport* getExportedFrom();
    kalport* getExportedTo();
    std::vector<kalport*> getConnectedPorts();
    std::vector<kalport*> getPortsOfDualPort();
    bool operator==(const kalport& other) const;
    bool operator!=(const kalport& other) const;
    ~kalport();

    kalcomponent* getComponent() const;
    const std::string* getName() const;
    const std::string* getSecondName() const;
    const std::string* getText() const;
    kalportbus* getBus() const;
    kalnet* getNet() const;
    int getDirection() const;

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

class KALDATA_API kalportbus : public kalattributes {
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
    kalportbus(const std::string* name, const std::string* secondName, unsigned int msb, unsigned int lsb,
               int direction, const std::string* text);
    kalport* portAtIndex(unsigned int i);
    void connect(unsigned int i, kalport* port);
    void disconnect(unsigned int i);
    void disconnect(kalport* port);
    bool hasConnectedPort();
    kalnetbus* getConnectedNetbus();
    bool connectToNetbus(kalnetbus* netbus);
    void exportTo(kalportbus* portbus);
    void unexport();
    kalportbus* getExportedToBus();
    void setAttribute(const std::string* name, const std::string* value, const std::string* vendor,
                      bool propagate);
    void setAttributeValue(const std::string* name, const std::string* value, bool propagate);
    void removeAttribute(const std::string* name, bool propagate);
    void removeAllAttributes(bool propagate);
    ~kalportbus();

    kalcomponent* getComponent() const;
    const std::string* getName() const;
    const std::string* getSecondName() const;
    const std::string* getText() const;
    std::vector<kalport*> getBits() const;
    int getDirection() const;
    unsigned int getMsb() const;
    unsigned int getLsb() const;

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
