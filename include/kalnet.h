// SPDX-License-Identifier: Apache-2.0
// Nets, net buses and their free queries.
#ifndef KALDATA_KALNET_H
#define KALDATA_KALNET_H

#include <string>
#include <vector>

#include "kalattributes.h"
#include "kalexport.h"

class kaldesign;
class kalport;
class kalnetbus;
struct kalaccess;

class kalnet : public kalattributes {
private:
    // Large designs hold millions of nets, so the common net (named, second
    // name equal to the name, no text) is a single allocation.
    kaldesign* design;
    std::string name;  // getName() is null for a net made without names
    struct extras;     // a second name unlike the name, a text, or no names at all
    extras* extra;
    kalnetbus* bus;
    kalport* ports;  // connected ports in order of connection: the port list's storage word

public:
    KALDATA_API kalnet(const std::string* name, const std::string* secondName, const std::string* text);
    KALDATA_API bool isConnectedTo(kalport* port);
    KALDATA_API void connect(kalport* port, bool flag);
    KALDATA_API void disconnect(kalport* port, bool flag);
    KALDATA_API void setBus(kalnetbus* netbus);
    KALDATA_API void unsetBus();
    KALDATA_API std::vector<kalport*> getTop();
    KALDATA_API std::vector<kalport*> getSources();
    KALDATA_API std::vector<kalport*> getSinks();
    KALDATA_API bool operator==(const kalnet& other) const;
    KALDATA_API bool operator!=(const kalnet& other) const;
    KALDATA_API ~kalnet();

    KALDATA_API kaldesign* getDesign() const;
    KALDATA_API const std::string* getName() const;
    KALDATA_API const std::string* getSecondName() const;
    KALDATA_API const std::string* getText() const;
    KALDATA_API kalnetbus* getBus() const;
    KALDATA_API std::vector<kalport*> getPorts() const;

private:
    friend struct kalaccess;
    void setDesign(kaldesign* design);
    void setName(const std::string* name);
    void setSecondName(const std::string* secondName);
    extras& more();
    void tidy();  // drops the side record once the net is common again
};

class kalnetbus : public kalattributes {
private:
    kaldesign* design;
    std::string* name;
    std::string* secondName;
    std::string* text;  // its lowest bit marks a bus that removeNetbus handed to the caller
    std::vector<kalnet*>* bits;
    unsigned int msb;
    unsigned int lsb;

public:
    KALDATA_API kalnetbus(const std::string* name, const std::string* secondName, unsigned int msb,
                          unsigned int lsb, const std::string* text);
    KALDATA_API static kalnetbus* createNetBus(const std::string* name, const std::string* secondName,
                                               unsigned int msb, unsigned int lsb,
                                               const std::vector<kalnet*>& nets, const std::string* text);
    KALDATA_API kalnet* netAtIndex(unsigned int i);
    KALDATA_API void connect(unsigned int i, kalnet* net);
    KALDATA_API void disconnect(unsigned int i);
    KALDATA_API void disconnect(kalnet* net);
    // Examines slot 0 only and does not return while that slot has no source (kept as it always was).
    KALDATA_API bool hasSoucePortsInNetBus();
    KALDATA_API void setAttribute(const std::string* name, const std::string* value,
                                  const std::string* vendor, bool propagate);
    KALDATA_API void setAttributeValue(const std::string* name, const std::string* value, bool propagate);
    KALDATA_API void removeAttribute(const std::string* name, bool propagate);
    KALDATA_API void removeAllAttributes(bool propagate);
    KALDATA_API ~kalnetbus();

    KALDATA_API kaldesign* getDesign() const;
    KALDATA_API const std::string* getName() const;
    KALDATA_API const std::string* getSecondName() const;
    KALDATA_API const std::string* getText() const;
    KALDATA_API std::vector<kalnet*> getBits() const;
    KALDATA_API unsigned int getMsb() const;
    KALDATA_API unsigned int getLsb() const;

private:
    friend struct kalaccess;
    void setDesign(kaldesign* design);
    void setName(const std::string* name);
    void setSecondName(const std::string* secondName);
    void setRange(unsigned int msb, unsigned int lsb);
    void clearBits();
    void markHandedBack();
    bool handedBack() const;
    std::string* ownText() const;
};

KALDATA_API bool isInternalConnection(kalnet* net);
KALDATA_API bool isInternalConnection(kalnetbus* netbus);

#endif
