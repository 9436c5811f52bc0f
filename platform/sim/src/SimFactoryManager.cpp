#include "SimFactoryManager.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimFactoryManager::SimFactoryManager(SimSet& set)
    : SimObject(set, "FactoryManager",
                {{"setGpio", Kind::Int, {Kind::String}},
                 {"getGpio", Kind::Int, {Kind::String}},
                 {"commandIic", Kind::Int, {Kind::String}},
                 {"controlHdmi", Kind::Int, {Kind::String}},
                 {"burnSecureFuses", Kind::Bool, {}},
                 {"getSecureFuses", Kind::Bool, {Kind::FuseList}},
                 {"deleteCredentials", Kind::Bool, {}},
                 {"rewriteCredentials", Kind::Bool, {}},
                 {"readEaromBlock", Kind::Bool, {Kind::String}},
                 {"writeEaromBlock", Kind::Bool, {Kind::String}},
                 {"queryEaromSize", Kind::Bool, {Kind::String}}},
                {{"fuses", Kind::FuseList, json::array()},
                 {"credentials", Kind::String, "installed"},
                 {"earom", Kind::Bytes, std::string(512, '0')}}) {}

int SimFactoryManager::setGpio(const std::string& command, std::string& result) {
    return textCommand("setGpio", command, result);
}

int SimFactoryManager::getGpio(const std::string& command, std::string& result) {
    return textCommand("getGpio", command, result);
}

int SimFactoryManager::commandIic(std::string command, std::string& result) {
    return textCommand("commandIic", command, result);
}

int SimFactoryManager::controlHdmi(const std::string& command, std::string& result) {
    return textCommand("controlHdmi", command, result);
}

bool SimFactoryManager::burnSecureFuses(const std::vector<zo::port::secfuseitem>& items) {
    Call call(*this, "burnSecureFuses", {json(items)});
    const bool done = call.result(true);
    if (done) {
        std::vector<zo::port::secfuseitem> fuses =
            state("fuses").get<std::vector<zo::port::secfuseitem>>();
        for (const zo::port::secfuseitem& item : items) {
            auto same = std::find_if(
                fuses.begin(), fuses.end(),
                [&item](const zo::port::secfuseitem& fuse) { return fuse.name == item.name; });
            if (same != fuses.end()) {
                same->value = item.value;
            } else {
                fuses.push_back(item);
            }
        }
        state("fuses") = fuses;
    }
    return done;
}

bool SimFactoryManager::getSecureFuses(std::vector<zo::port::secfuseitem>& items,
                                       unsigned int selector) {
    Call call(*this, "getSecureFuses", {selector});
    items = call.output(state("fuses").get<std::vector<zo::port::secfuseitem>>());
    return call.result(true);
}

bool SimFactoryManager::deleteCredentials(int mode) {
    return credentials("deleteCredentials", mode, "deleted");
}

bool SimFactoryManager::rewriteCredentials(int mode) {
    return credentials("rewriteCredentials", mode, "installed");
}

bool SimFactoryManager::readEaromBlock(int offset, unsigned int length, std::string& data) {
    Call call(*this, "readEaromBlock", {offset, length});
    const std::vector<uint8_t> earom = stateAs<std::vector<uint8_t>>("earom");
    const bool inside = offset >= 0 && static_cast<uint64_t>(offset) + length <= earom.size();
    data = call.output(inside ? toHex(earom.data() + offset, length) : std::string());
    return call.result(inside);
}

bool SimFactoryManager::writeEaromBlock(int offset, const std::string& data, std::string& result) {
    Call call(*this, "writeEaromBlock", {offset, textOrHex(data)});
    std::vector<uint8_t> earom = stateAs<std::vector<uint8_t>>("earom");
    std::vector<uint8_t> bytes;
    const bool valid = bytesFromJson(json(data), bytes) && offset >= 0 &&
                       static_cast<uint64_t>(offset) + bytes.size() <= earom.size();
    result = call.output(valid ? std::to_string(bytes.size()) : std::string());
    const bool done = call.result(valid);
    if (done && valid) {
        std::copy(bytes.begin(), bytes.end(), earom.begin() + offset);
        state("earom") = toHex(earom.data(), earom.size());
    }
    return done;
}

bool SimFactoryManager::queryEaromSize(std::string& size) {
    Call call(*this, "queryEaromSize");
    size = call.output(std::to_string(stateAs<std::vector<uint8_t>>("earom").size()));
    return call.result(true);
}

int SimFactoryManager::textCommand(const char* operation, const std::string& command,
                                   std::string& result) {
    Call call(*this, operation, {textOrHex(command)});
    result = call.output(std::string());
    return call.result(1);
}

bool SimFactoryManager::credentials(const char* operation, int mode, const char* after) {
    Call call(*this, operation, {mode});
    const bool done = call.result(true);
    if (done) {
        state("credentials") = after;
    }
    return done;
}

}  // namespace sim
