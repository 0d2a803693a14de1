// SPDX-License-Identifier: Apache-2.0
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
struct kalaccess;
struct kalhandedback;
struct kalhandback;

class kalcomponent {
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
    KALDATA_API kalcomponent(const std::string* vendor, const std::string* library, const std::string* name,
                             const std::string* version);
    KALDATA_API void setVendor(const std::string* value);
    KALDATA_API void setLibrary(const std::string* value);
    KALDATA_API void setName(const std::string* value);
    KALDATA_API void setVersion(const std::string* value);
    KALDATA_API ~kalcomponent();

    KALDATA_API const std::string* getAttributeValue(const std::string* name) const;
    KALDATA_API const std::string* getAttributeVendor(const std::string* name) const;
    KALDATA_API void setAttribute(const std::string* name, const std::string* value,
                                  const std::string* vendor);
    KALDATA_API void setAttributeValue(const std::string* name, const std::string* value);
    KALDATA_API void removeAttribute(const std::string* name);
    KALDATA_API void removeAllAttributes();

    KALDATA_API int addParameter(const std::string* name, kalparameter* parameter);
    KALDATA_API kalparameter* getParameter(const std::string* name);
    KALDATA_API int removeParameter(const std::string* name);

    KALDATA_API int createDesign(const std::string* vendor, const std::string* library,
                                 const std::string* name, const std::string* version);
    KALDATA_API int deleteDesign(const std::string* name);
    KALDATA_API kaldesign* getDesign(std::string* name);

    KALDATA_API int addNet(const std::string* name, const std::string* secondName, const std::string* type,
                           const std::string* text);
    KALDATA_API int removeNet(const std::string* name);
    KALDATA_API int addNetbus(const std::string* name, const std::string* type, const std::string* secondName,
                              unsigned int msb, unsigned int lsb, const std::string* text);
    KALDATA_API int removeNetbus(const std::string* name);
    KALDATA_API bool connect(const std::string* netName, const std::string* portName,
                             const std::string* instanceName);
    KALDATA_API bool disconnect(const std::string* netName, const std::string* portName,
                                const std::string* instanceName);

    KALDATA_API kalfileset* addFileSet(const std::string* name, const std::string* second,
                                       const std::string* third);
    KALDATA_API kalfile* addFile(const std::string* filesetName, const std::string* fileName,
                                 const std::string* second, const std::string* third);

    KALDATA_API int addLPC(kallpc* lpc);
    KALDATA_API int hasLPC(std::string* name);
    KALDATA_API const std::string* getLPCValue(const std::string* name);

    KALDATA_API kalelements* getElements();
    KALDATA_API kalelements* getElements(const std::string* path);
    KALDATA_API unsigned int elementCount();
    KALDATA_API unsigned int elementCount(const std::string* name);
    KALDATA_API kalgenerators* createGenerators();
    KALDATA_API kalgenerator* createGenerator(std::string name);

    KALDATA_API kalcomponent* getComponent(const std::string* path);
    KALDATA_API int removeComponent(const std::string* path);
    KALDATA_API bool needBBox();
    KALDATA_API int initBlackBoxPadPin(std::vector<std::string>& names);

    KALDATA_API bool operator==(const kalcomponent& other) const;
    KALDATA_API bool operator!=(const kalcomponent& other) const;

    KALDATA_API int addPort(const std::string* name, const std::string* second, int direction,
                            const std::string* fourth);
    KALDATA_API int addPortbus(const std::string* name, const std::string* second, unsigned int msb,
                               unsigned int lsb, int direction, const std::string* fourth);
    KALDATA_API kalport* getPort(const std::string* name, bool hierarchical);
    KALDATA_API kalportbus* getPortbus(const std::string* name, bool hierarchical);
    KALDATA_API int changePortName(const std::string* oldName, const std::string* newName);
    KALDATA_API int changePortbusName(const std::string* oldName, const std::string* newName);
    KALDATA_API int removePort(const std::string* name);
    KALDATA_API int removePortbus(const std::string* name);
    KALDATA_API int deletePortbus(const std::string* name);

    KALDATA_API int addExport(std::string path, bool hierarchical, const std::string* netArg,
                              const std::string* topName);
    KALDATA_API int removeExport(std::string path, bool hierarchical);

    KALDATA_API int getClockSourceState() const;

private:
    // Written by nets as ports join and leave them.
    friend struct kalaccess;
    void setClockSourceState(int state);
};

class kalcomponentdata : public kalattributes {
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

    KALDATA_API kalcomponentdata();
    KALDATA_API ~kalcomponentdata();

private:
    kalhandedback* handedBack;  // designs it let go of that still point to it
    friend struct kalhandback;
};

#endif
