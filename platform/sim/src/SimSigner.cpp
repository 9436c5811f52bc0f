#include "SimSigner.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimSigner::SimSigner(SimSet& set)
    : SimObject(set, "Signer", {{"signMessage", Kind::Int, {Kind::Bytes}}},
                {{"key", Kind::Bytes, "5eed"}}) {}

int SimSigner::signMessage(int key, const uint8_t* message, uint32_t messageLength,
                           uint8_t* signature, uint32_t signatureLength) {
    const std::string text(reinterpret_cast<const char*>(message),
                           message != nullptr ? messageLength : 0);
    Call call(*this, "signMessage", {key, textOrHex(text), messageLength, signatureLength});
    // FNV-1a over the key and the message seeds a xorshift stream.
    uint64_t hash = 1469598103934665603ULL;
    for (uint8_t byte : stateAs<std::vector<uint8_t>>("key")) {
        hash = (hash ^ byte) * 1099511628211ULL;
    }
    for (char byte : text) {
        hash = (hash ^ static_cast<uint8_t>(byte)) * 1099511628211ULL;
    }
    std::vector<uint8_t> own(signatureLength);
    for (uint8_t& byte : own) {
        hash ^= hash << 13;
        hash ^= hash >> 7;
        hash ^= hash << 17;
        byte = static_cast<uint8_t>(hash >> 24);
    }
    const std::vector<uint8_t> bytes = call.output(own);
    if (signature != nullptr) {
        std::copy(bytes.begin(), bytes.begin() + std::min<size_t>(bytes.size(), signatureLength),
                  signature);
    }
    return call.result(0);
}

}  // namespace sim
