// SPDX-License-Identifier: Apache-2.0
// The inside of a component: instances wired by nets and net buses, dual ports.
#ifndef KALDATA_KALDESIGN_H
#define KALDATA_KALDESIGN_H

#include <list>
#include <map>
#include <string>
#include <vector>

#include "kalattributes.h"
#include "kalexport.h"

class kalcomponent;
class kalport;
class kalportbus;
class kalnet;
class kalnetbus;
class kaldualport;
class kaldualportbus;
class kalelement;
class kaldesigndata;
struct kalinstanceorder;
struct kalnetindex;
struct kalinstanceindex;
struct kalhandedback;
struct kalhandback;

class kaldesign {
public:
    kalattributes* identity;
    kalcomponent* owner;
    kaldesigndata* data;

    KALDATA_API kaldesign(const std::string* vendor, const std::string* library, const std::string* name,
                          const std::string* version);
    KALDATA_API ~kaldesign();
    KALDATA_API void setAttribute(const std::string* key, const std::string* value,
                                  const std::string* vendor);
    KALDATA_API void removeAttribute(const std::string* key);

    KALDATA_API kalcomponent* getInstance(const std::string* name);
    KALDATA_API kalport* getComponentPort(const std::string* portName, const std::string* instanceName);
    KALDATA_API kalnetbus* getNetbus(const std::string* name);
    KALDATA_API kalnet* getNet(const std::string* name);
    KALDATA_API std::list<kalelement*>* getVirtualElements();
    KALDATA_API std::string getRelativeHierarchyName(kalport* port) const;
    KALDATA_API bool isSourcePort(kalport* port) const;
    KALDATA_API bool isSourcePort(kalportbus* bus) const;
    KALDATA_API bool operator==(const kaldesign& other) const;
    KALDATA_API bool operator!=(const kaldesign& other) const;

    KALDATA_API bool addInstance(std::string* name, kalcomponent* component);
    KALDATA_API bool addNet(const std::string* name, const std::string* secondName, const std::string* type,
                            const std::string* text);
    KALDATA_API bool addNetbus(const std::string* name, const std::string* type,
                               const std::string* secondName, unsigned int first, unsigned int last,
                               const std::string* text);
    KALDATA_API void removeAllInstances();

    KALDATA_API bool connect(const std::string* netName, const std::string* portName,
                             const std::string* instanceName);
    KALDATA_API bool disconnect(const std::string* netName, const std::string* portName,
                                const std::string* instanceName);

    KALDATA_API bool changeNetName(const std::string* oldName, const std::string* newName);
    KALDATA_API bool changeNetbusName(const std::string* oldName, const std::string* newName);
    KALDATA_API bool changeNetBusRange(const std::string* name, unsigned int first, unsigned int last);
    KALDATA_API bool removeNet(const std::string* name);
    KALDATA_API bool removeNetbus(const std::string* name);
    KALDATA_API bool deleteNetbus(const std::string* name);

    KALDATA_API bool removeInstance(const std::string* name);

    KALDATA_API kaldualport* getDualPort(const std::string& name);
    KALDATA_API kaldualportbus* getDualPortbus(const std::string& name);
    KALDATA_API void insertDualPort(const std::string& name, kaldualport* dualPort);
    KALDATA_API void addPortToDualPort(const std::string& name, kalport* port);
    KALDATA_API void addPortsToDualPort(const std::string& name, const std::vector<kalport*>& ports);
    KALDATA_API bool insertDualPortBus(const std::string& name, kaldualportbus* bus);
    KALDATA_API void removePortFromDualPort(const std::string& dualPortName, const std::string& portName);
    KALDATA_API void removePortFromDualPort(const std::string& dualPortName, kalport* port);
    KALDATA_API void removeDualPort(const std::string& name);
    KALDATA_API void deleteDualPort(const std::string& name);
    KALDATA_API void removeDualPortBus(const std::string& name);
    KALDATA_API void deleteDualPortBus(const std::string& name);

private:
    // addNet's work; answers the net the name maps to, new or not.
    kalnet* placeNet(const std::string& name, const std::string& secondName, const std::string* type,
                     const std::string* text, bool& added);
};

class kaldesigndata : public kalattributes {
private:
    std::map<std::string, kalcomponent*>* instanceMap;
    std::list<kalcomponent*>* instanceList;
    std::map<std::string, kalnetbus*>* netbusMap;
    std::map<std::string, kalnet*>* netMap;
    std::map<std::string, kaldualport*>* dualPortMap;
    std::map<std::string, kaldualportbus*>* dualPortbusMap;
    std::list<kalelement*>* virtualElementList;
    kalinstanceorder* instanceOrder;  // finds an instance's place in the list without walking it
    kalnetindex* netIndex;            // finds a net by name without walking the net map
    kalinstanceindex* instanceIndex;  // the same for instances
    kalhandedback* handedBack;        // what the design let go of that still points to it

    friend class kaldesign;
    friend struct kalhandback;

public:
    KALDATA_API kaldesigndata();
    KALDATA_API ~kaldesigndata();

    KALDATA_API std::map<std::string, kalcomponent*>* getInstanceMap() const;
    KALDATA_API std::list<kalcomponent*>* getInstanceList() const;
    KALDATA_API std::map<std::string, kalnetbus*>* getNetbusMap() const;
    KALDATA_API std::map<std::string, kalnet*>* getNetMap() const;
    KALDATA_API std::map<std::string, kaldualport*>* getDualPortMap() const;
    KALDATA_API std::map<std::string, kaldualportbus*>* getDualPortbusMap() const;
    KALDATA_API std::list<kalelement*>* getVirtualElementList() const;
};

#endif
