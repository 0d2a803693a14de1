// A short tour of libkaldata with the recording event service standing in for
// the application platform. Every record the library sends is printed.
#include <cstdio>
#include <memory>
#include <string>

#include "kaldata.h"
#include "kalrecorder.h"

namespace {

void printRecords(const char* step) {
    std::printf("-- %s\n", step);
    for (const auto& line : kalrecorder::lines())
        std::printf("   event: %s\n", line.c_str());
    kalrecorder::clear();
}

}  // namespace

int main() {
    // The project singleton and its message queue.
    kalproject* project = kalproject::getInstance();
    project->messageQueue->addMessage(1, "design opened");
    project->messageQueue->addMessage(2, "clock net has no driver");
    std::printf("messages of type 2: %u\n", project->messageQueue->messageCount(2));

    // Bus-bit names and hierarchical paths.
    std::string bus("data"), path("top/u_core/u_alu"), slash("/");
    std::unique_ptr<std::string> bit(kalutilities::constructBusBit(&bus, 7));
    std::unique_ptr<std::vector<std::string>> parts(kalutilities::deconstructString(&path, &slash));
    std::printf("bit name: %s; path has %zu levels\n", bit->c_str(), parts->size());

    // Attributes: a block's identity is four attributes under vendor "SPIRIT".
    kalattributes identity;
    const std::string spirit("SPIRIT"), vendorKey("Vendor"), nameKey("Name");
    const std::string vendor("acme"), name("uart");
    identity.setAttribute(&vendorKey, &vendor, &spirit);
    identity.setAttribute(&nameKey, &name, &spirit);
    std::printf("block %s from %s\n", identity.getName()->c_str(), identity.getVendor()->c_str());

    // Generators in groups, deep-copied.
    kalgenerators registry;
    kalgenerator gen;
    gen.setName("bridge");
    gen.setDetail("bus bridge generator");
    registry.addGenerator("bridge", &gen);
    registry.createGroup("interconnect");
    registry.addGeneratorToGroup(&gen, "interconnect");
    kalgenerators* copy = registry.clone();
    std::printf("copied registry: %zu generator(s), %zu group(s)\n", copy->getGeneratorMap().size(),
                copy->getGroupMap().size());
    for (auto& g : copy->getGeneratorMap())
        delete g.second;  // a registry never frees what it holds
    for (auto& g : copy->getGroupMap())
        delete g.second;
    delete copy;
    for (auto& g : registry.getGroupMap())
        delete g.second;

    printRecords("core records send no events");
    kalproject::destoryInstance();
    return 0;
}
