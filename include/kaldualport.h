// SPDX-License-Identifier: Apache-2.0
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

class kaldualport : public kalattributes {
private:
    std::string name;
    kaldesign* design;
    kaldualportbus* bus;
    std::vector<kalport*> ports;

public:
    KALDATA_API kaldualport(const std::string& name);
    KALDATA_API std::vector<kalport*> getPortList() const;
    KALDATA_API bool addPort(kalport* port);
    KALDATA_API bool addPort(std::vector<kalport*> ports);
    KALDATA_API kalport* removePort(const std::string& hierarchicalName);
    KALDATA_API int direction() const;
    KALDATA_API kalnet* getConnectedNet() const;
    KALDATA_API kalport* getConnectedPort() const;
    KALDATA_API bool isConnected() const;
    KALDATA_API kalport* getExportedTo() const;
    KALDATA_API unsigned int getPortsCount() const;
    KALDATA_API void setBus(kaldualportbus* bus);
    KALDATA_API void unsetBus();
    KALDATA_API ~kaldualport();

    KALDATA_API const std::string& getName() const;
    KALDATA_API kaldesign* getDesign() const;
    KALDATA_API kaldualportbus* getBus() const;

private:
    friend struct kalaccess;
    void setDesign(kaldesign* design);
};

class kaldualportbus : public kalattributes {
private:
    std::string name;
    kaldesign* design;
    std::vector<kaldualport*> slotVector;
    unsigned int msb;
    unsigned int lsb;

public:
    KALDATA_API kaldualportbus(const std::string& name, unsigned int msb, unsigned int lsb);
    KALDATA_API static kaldualportbus* createDualPortBus(std::string name, unsigned int msb, unsigned int lsb,
                                                         std::vector<kaldualport*> dualPorts);
    KALDATA_API unsigned int getDualPortsCount() const;
    KALDATA_API void connect(unsigned int index, kaldualport* dualPort);
    KALDATA_API void disconnect(unsigned int index);
    KALDATA_API void disconnect(kaldualport* dualPort);
    KALDATA_API int direction() const;
    KALDATA_API void setAttribute(const std::string* name, const std::string* value,
                                  const std::string* vendor, bool propagate);
    KALDATA_API void setAttributeValue(const std::string* name, const std::string* value, bool propagate);
    KALDATA_API void removeAttribute(const std::string* name, bool propagate);
    KALDATA_API void removeAllAttributes(bool propagate);
    KALDATA_API ~kaldualportbus();

    KALDATA_API const std::string& getName() const;
    KALDATA_API kaldesign* getDesign() const;
    KALDATA_API std::vector<kaldualport*> getSlots() const;
    KALDATA_API unsigned int getMsb() const;
    KALDATA_API unsigned int getLsb() const;

private:
    friend struct kalaccess;
    void setDesign(kaldesign* design);
};

#endif
