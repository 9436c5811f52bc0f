#ifndef ZO_PORT_SIGNER_H
#define ZO_PORT_SIGNER_H

#include <cstdint>

#include "zo/port/Object.h"

namespace zo {
namespace port {

// Signs messages with the set's keys.
class Signer : public Object {
  public:
    Signer();
    ~Signer() override;

    // Writes `signatureLength` bytes of the signature of the message into `signature`; 0 on
    // success.
    virtual int signMessage(int key, const uint8_t* message, uint32_t messageLength,
                            uint8_t* signature, uint32_t signatureLength) = 0;
};

}  // namespace port
}  // namespace zo

#endif
