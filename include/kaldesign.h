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

class KALDATA_API kaldesign {
public:
    kalattributes* identity;
    kalcomponent* owner;
    kaldesigndata* data;

    kaldesign(const std::string* vendor, const std::string* library, const std::string* name,
              const std::string* version);
    ~kaldesign();
    void setAttribute(const std::string* key, const std::string* value, const std::string* vendor);
    void removeAttribute(const std::string* key);

    kalcomponent* getInstance(const std::string* name);
    kalport* getComponentPort(const std::string* portName, const std::string* instanceName);
    kalnetbus* getNetbus(const std::string* name);
    kalnet* getNet(const std::string* name);
    std::list<kalelement*>* getVirtualElements();
    std::string getRelativeHierarchyName(kalport* port) const;
    bool isSourcePort(kalport* port) const;
    bool isSourcePort(kalportbus* bus) const;
    bool operator==(const kaldesign& other) const;
    bool operator!=(const kaldesign& other) const;

    bool addInstance(std::string* name, kalcomponent* component);
    bool addNet(const std::string* name, const std::string* secondName, const std::string* type,
                const std::string* text);
    bool addNetbus(const std::string* name, const std::string* type, const std::string* secondName,
                   unsigned int first, unsigned int last, const std::string* text);
    void removeAllInstances();

    bool connect(const std::string* netName, const std::string* portName, const std::string* instanceName);
    bool disconnect(const std::string* netName, const std::string* portName, const std::string* instanceName);

    bool changeNetName(const std::string* oldName, const std::string* newName);
    bool changeNetbusName(const std::string* oldName, const std::string* newName);
    bool changeNetBusRange(const std::string* name, unsigned int first, unsigned int last);
    bool removeNet(const std::string* name);
    bool removeNetbus(const std::string* name);
    bool deleteNetbus(const std::string* name);

    bool removeInstance(const std::string* name);

    kaldualport* getDualPort(const std::string& name);
    kaldualportbus* getDualPortbus(const std::string& name);
    void insertDualPort(const std::string& name, kaldualport* dualPort);
    void addPortToDualPort(const std::string& name, kalport* port);
    void addPortsToDualPort(const std::string& name, const std::vector<kalport*>& ports);
    bool insertDualPortBus(const std::string& name, kaldualportbus* bus);
    void removePortFromDualPort(const std::string& dualPortName, const std::string& portName);
    void removePortFromDualPort(const std::string& dualPortName, kalport* port);
    void removeDualPort(const std::string& name);
    void deleteDualPort(const std::string& name);
    void removeDualPortBus(const std::string& name);
    void deleteDualPortBus(const std::string& name);

private:
    // addNet's work; answers the net the name maps to, new or not.
    kalnet* placeNet(const std::string& name, const std::string& secondName, const std::string* type,
                     const std::string* text, bool& added);
};

class KALDATA_API kaldesigndata : public kalattributes {
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
    kaldesigndata();
    ~kaldesigndata();

    std::map<std::string, kalcomponent*>* getInstanceMap() const;
    std::list<kalcomponent*>* getInstanceList() const;
    std::map<std::string, kalnetbus*>* getNetbusMap() const;
    std::map<std::string, kalnet*>* getNetMap() const;
    std::map<std::string, kaldualport*>* getDualPortMap() const;
    std::map<std::string, kaldualportbus*>* getDualPortbusMap() const;
    std::list<kalelement*>* getVirtualElementList() const;
};

#endif
