// Dual ports (several ports merged into one) and dual port buses.
#ifndef KALDATA_KALDUALPORT_H
#define KALDATA_KALDUALPORT_H

#include <string>
#include <vector>

#include "kalattributes.h"
#include "kalexport.h"

class kaldesign;
class kalport;
class kalnet;
class kaldualportbus;
struct kalaccess;

class KALDATA_API kaldualport : public kalattributes {
private:
    std::string name;
    kaldesign* design;
    kaldualportbus* bus;
    std::vector<kalport*> ports;

public:
    kaldualport(const std::string& name);
    std::vector<kalport*> getPortList() const;
    bool addPort(kalport* port);
    bool addPort(std::vector<kalport*> ports);
    kalport* removePort(const std::string& hierarchicalName);
    int direction() const;
    kalnet* getConnectedNet() const;
    kalport* getConnectedPort() const;
    bool isConnected() const;
    kalport* getExportedTo() const;
    unsigned int getPortsCount() const;
    void setBus(kaldualportbus* bus);
    void unsetBus();
    ~kaldualport();

    const std::string& getName() const;
    kaldesign* getDesign() const;
    kaldualportbus* getBus() const;
    void setDesign(kaldesign* design);

private:
    friend struct kalaccess;
};

class KALDATA_API kaldualportbus : public kalattributes {
private:
    std::string name;
    kaldesign* design;
    std::vector<kaldualport*> slotVector;
    unsigned int msb;
    unsigned int lsb;

public:
    kaldualportbus(const std::string& name, unsigned int msb, unsigned int lsb);
    static kaldualportbus* createDualPortBus(std::string name, unsigned int msb, unsigned int lsb,
                                             std::vector<kaldualport*> dualPorts);
    unsigned int getDualPortsCount() const;
    void connect(unsigned int index, kaldualport* dualPort);
    void disconnect(unsigned int index);
    void disconnect(kaldualport* dualPort);
    int direction() const;
    void setAttribute(const std::string* name, const std::string* value, const std::string* vendor,
                      bool propagate);
    void setAttributeValue(const std::string* name, const std::string* value, bool propagate);
    void removeAttribute(const std::string* name, bool propagate);
    void removeAllAttributes(bool propagate);
    ~kaldualportbus();

    const std::string& getName() const;
    kaldesign* getDesign() const;
    std::vector<kaldualport*> getSlots() const;
    unsigned int getMsb() const;
    unsigned int getLsb() const;
    void setDesign(kaldesign* design);
};

#endif
