// SPDX-License-Identifier: Apache-2.0
// A tool that links the recording event service instead of defining one.
#include <kaldata.h>
#include <kalrecorder.h>
#include <kalsupport.h>

#include <cstdio>
#include <string>

int main() {
    std::string v("acme"), l("ip"), top("top"), ver("1.0"), rtl("rtl"), n("n1"), a("a"), empty("");
    auto* chip = new kalcomponent(&v, &l, &top, &ver);
    chip->createDesign(&v, &l, &rtl, &ver);
    chip->addPort(&a, &a, 1, nullptr);
    chip->addNet(&n, &n, &empty, nullptr);
    chip->connect(&n, &a, &empty);
    for (const std::string& line : kalrecorder::lines())
        std::printf("%s\n", line.c_str());
    const bool ok = kalrecorder::lines() == std::vector<std::string>{"net/add net=top::rtl/n1 topport=top/a"};
    kalsupport::release(chip);
    kalrecorder::clear();
    return ok ? 0 : 1;
}
