#include "SimUart.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimUart::SimUart(SimSet& set)
    : SimObject(set, "Uart",
                {{"configure", Kind::Int, {}},
                 {"read", Kind::Int, {Kind::Bytes}},
                 {"write", Kind::Int, {}},
                 {"getMode", Kind::Int, {}},
                 {"setMode", Kind::Int, {}}},
                {{"config", Kind::IntList, json::array({0, 8, 0, 0})},
                 {"rxData", Kind::Bytes, ""},
                 {"txData", Kind::Bytes, ""},
                 {"mode", Kind::Int, 0}}) {}

int SimUart::configure(int frameFormat, int baudRateIndex, int oddParity, int twoStopBits,
                       int flag5, int flag6) {
    Call call(*this, "configure",
              {frameFormat, baudRateIndex, oddParity, twoStopBits, flag5, flag6});
    const int status = call.result(0);
    if (status == 0) {
        state("config") = json::array({frameFormat, baudRateIndex, oddParity, twoStopBits});
    }
    return status;
}

int SimUart::read(uint8_t* buffer, int capacity, int flag) {
    Call call(*this, "read", {capacity, flag});
    std::vector<uint8_t> waiting = stateAs<std::vector<uint8_t>>("rxData");
    const size_t room = capacity > 0 ? static_cast<size_t>(capacity) : 0;
    const bool scripted = call.hasScriptedOutput();
    std::vector<uint8_t> bytes = call.output(std::vector<uint8_t>(
        waiting.begin(), waiting.begin() + static_cast<long>(std::min(room, waiting.size()))));
    bytes.resize(std::min(bytes.size(), room));
    if (buffer != nullptr && !bytes.empty()) {
        std::memcpy(buffer, bytes.data(), bytes.size());
    }
    const int count = call.result(static_cast<int>(bytes.size()));
    if (count > 0 && !scripted) {
        waiting.erase(waiting.begin(),
                      waiting.begin() + static_cast<long>(std::min(bytes.size(), waiting.size())));
        state("rxData") = toHex(waiting.data(), waiting.size());
    }
    return count;
}

int SimUart::write(const uint8_t* buffer, int count, int flag) {
    const size_t size = buffer != nullptr && count > 0 ? static_cast<size_t>(count) : 0;
    Call call(*this, "write", {bytesToJson(buffer, size), count, flag});
    const int written = call.result(static_cast<int>(size));
    if (written > 0) {
        std::vector<uint8_t> sent = stateAs<std::vector<uint8_t>>("txData");
        sent.insert(sent.end(), buffer, buffer + std::min(size, static_cast<size_t>(written)));
        if (sent.size() > kTxDataKept) {
            sent.erase(sent.begin(), sent.end() - static_cast<long>(kTxDataKept));
        }
        state("txData") = toHex(sent.data(), sent.size());
    }
    return written;
}

int SimUart::getMode(int which) {
    Call call(*this, "getMode", {which});
    return call.result(stateAs<int>("mode"));
}

int SimUart::setMode(int which, int mode) {
    Call call(*this, "setMode", {which, mode});
    const int status = call.result(0);
    if (status == 0) {
        state("mode") = 1;
    }
    return status;
}

}  // namespace sim
