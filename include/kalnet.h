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

class KALDATA_API kalnet : public kalattributes {
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
    kalnet(const std::string* name, const std::string* secondName, const std::string* text);
    bool isConnectedTo(kalport* port);
    void connect(kalport* port, bool flag);
    void disconnect(kalport* port, bool flag);
    void setBus(kalnetbus* netbus);
    void unsetBus();
    std::vector<kalport*> getTop();
    std::vector<kalport*> getSources();
    std::vector<kalport*> getSinks();
    bool operator==(const kalnet& other) const;
    bool operator!=(const kalnet& other) const;
    ~kalnet();

    kaldesign* getDesign() const;
    const std::string* getName() const;
    const std::string* getSecondName() const;
    const std::string* getText() const;
    kalnetbus* getBus() const;
    std::vector<kalport*> getPorts() const;

private:
    friend struct kalaccess;
    void setDesign(kaldesign* design);
    void setName(const std::string* name);
    void setSecondName(const std::string* secondName);
    extras& more();
    void tidy();  // drops the side record once the net is common again
};

class KALDATA_API kalnetbus : public kalattributes {
private:
    kaldesign* design;
    std::string* name;
    std::string* secondName;
    std::string* text;  // its lowest bit marks a bus that removeNetbus handed to the caller
    std::vector<kalnet*>* bits;
    unsigned int msb;
    unsigned int lsb;

public:
    kalnetbus(const std::string* name, const std::string* secondName, unsigned int msb, unsigned int lsb,
              const std::string* text);
    static kalnetbus* createNetBus(const std::string* name, const std::string* secondName, unsigned int msb,
                                   unsigned int lsb, const std::vector<kalnet*>& nets,
                                   const std::string* text);
    kalnet* netAtIndex(unsigned int i);
    void connect(unsigned int i, kalnet* net);
    void disconnect(unsigned int i);
    void disconnect(kalnet* net);
    // Examines slot 0 only and does not return while that slot has no source (kept as it always was).
    bool hasSoucePortsInNetBus();
    void setAttribute(const std::string* name, const std::string* value, const std::string* vendor,
                      bool propagate);
    void setAttributeValue(const std::string* name, const std::string* value, bool propagate);
    void removeAttribute(const std::string* name, bool propagate);
    void removeAllAttributes(bool propagate);
    ~kalnetbus();

    kaldesign* getDesign() const;
    const std::string* getName() const;
    const std::string* getSecondName() const;
    const std::string* getText() const;
    std::vector<kalnet*> getBits() const;
    unsigned int getMsb() const;
    unsigned int getLsb() const;

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
