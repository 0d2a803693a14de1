// A block: identity, ports, parameters, files, catalogue, generators and the
// designs that make up its inside.
#ifndef KALDATA_KALCOMPONENT_H
#define KALDATA_KALCOMPONENT_H

#include <map>
#include <string>
#include <vector>

#include "kalattributes.h"
#include "kalexport.h"

class kaldesign;
class kalport;
class kalportbus;
class kalparameter;
class kalfile;
class kalfileset;
class kallpc;
class kalelements;
class kalgenerator;
class kalgenerators;
class kalcomponentdata;
struct kalhandedback;
struct kalhandback;

class KALDATA_API kalcomponent {
public:
    kalattributes* identity;

private:
    void* reserved1;

public:
    kaldesign* parentDesign;
    kalcomponentdata* data;

private:
    void* reserved2;
    int clockSourceState;

public:
    kalcomponent(const std::string* vendor, const std::string* library, const std::string* name,
                 const std::string* version);
    void setVendor(const std::string* value);
    void setLibrary(const std::string* value);
    void setName(const std::string* value);
    void setVersion(const std::string* value);
    ~kalcomponent();

    const std::string* getAttributeValue(const std::string* name) const;
    const std::string* getAttributeVendor(const std::string* name) const;
    void setAttribute(const std::string* name, const std::string* value, const std::string* vendor);
    void setAttributeValue(const std::string* name, const std::string* value);
    void removeAttribute(const std::string* name);
    void removeAllAttributes();

    int addParameter(const std::string* name, kalparameter* parameter);
    kalparameter* getParameter(const std::string* name);
    int removeParameter(const std::string* name);

    int createDesign(const std::string* vendor, const std::string* library, const std::string* name,
                     const std::string* version);
    int deleteDesign(const std::string* name);
    kaldesign* getDesign(std::string* name);

    int addNet(const std::string* name, const std::string* secondName, const std::string* type,
               const std::string* text);
    int removeNet(const std::string* name);
    int addNetbus(const std::string* name, const std::string* type, const std::string* secondName,
                  unsigned int msb, unsigned int lsb, const std::string* text);
    int removeNetbus(const std::string* name);
    bool connect(const std::string* netName, const std::string* portName, const std::string* instanceName);
    bool disconnect(const std::string* netName, const std::string* portName, const std::string* instanceName);

    kalfileset* addFileSet(const std::string* name, const std::string* second, const std::string* third);
    kalfile* addFile(const std::string* filesetName, const std::string* fileName, const std::string* second,
                     const std::string* third);

    int addLPC(kallpc* lpc);
    int hasLPC(std::string* name);
    const std::string* getLPCValue(const std::string* name);

    kalelements* getElements();
    kalelements* getElements(const std::string* path);
    unsigned int elementCount();
    unsigned int elementCount(const std::string* name);
    kalgenerators* createGenerators();
    kalgenerator* createGenerator(std::string name);

    kalcomponent* getComponent(const std::string* path);
    int removeComponent(const std::string* path);
    bool needBBox();
    int initBlackBoxPadPin(std::vector<std::string>& names);

    bool operator==(const kalcomponent& other) const;
    bool operator!=(const kalcomponent& other) const;

    int addPort(const std::string* name, const std::string* second, int direction, const std::string* fourth);
    int addPortbus(const std::string* name, const std::string* second, unsigned int msb, unsigned int lsb,
                   int direction, const std::string* fourth);
    kalport* getPort(const std::string* name, bool hierarchical);
    kalportbus* getPortbus(const std::string* name, bool hierarchical);
    int changePortName(const std::string* oldName, const std::string* newName);
    int changePortbusName(const std::string* oldName, const std::string* newName);
    int removePort(const std::string* name);
    int removePortbus(const std::string* name);
    int deletePortbus(const std::string* name);

    int addExport(std::string path, bool hierarchical, const std::string* netArg, const std::string* topName);
    int removeExport(std::string path, bool hierarchical);

    int getClockSourceState() const;
    void setClockSourceState(int state);
};

class KALDATA_API kalcomponentdata : public kalattributes {
public:
    std::string* instanceName;
    kalelements* elements;
    std::map<std::string, kaldesign*> designs;
    std::map<std::string, kalportbus*> portbuses;
    std::map<std::string, kalport*> ports;
    std::map<std::string, kalfileset*> filesets;
    kalgenerators* generators;
    std::map<std::string, kalparameter*> parameters;
    std::vector<kallpc*> lpcs;

    kalcomponentdata();
    ~kalcomponentdata();

private:
    kalhandedback* handedBack;  // designs it let go of that still point to it
    friend struct kalhandback;
};

#endif
