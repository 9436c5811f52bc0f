#include "SimConfig.h"

#include <algorithm>
#include <cstring>

#include "zo/host/Host.h"

namespace sim {

SimConfig::SimConfig(SimSet& set)
    : SimObject(set, "ConfigUtil", {{"readInt", Kind::Int, {Kind::Int}}}, {}, false) {}

int SimConfig::readInt(const std::string& file, const std::string& section, const std::string& key,
                       int& value) {
    Call call(*this, "readInt", {file, section, key});
    int read = value;
    const int found = zo::host::readIniInt(file, section, key, read);
    const bool scripted = call.hasScriptedOutput();
    const int filled = call.output(read);
    const int status = call.result(found);
    if (found != 0 || scripted) {
        value = filled;
    }
    return status;
}

}  // namespace sim
