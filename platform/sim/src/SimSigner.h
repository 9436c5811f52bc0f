#ifndef SIM_SIMSIGNER_H
#define SIM_SIMSIGNER_H

#include "sim/SimSet.h"
#include "zo/port/Signer.h"

namespace sim {

class SimSigner : public zo::port::Signer, public SimObject {
  public:
    explicit SimSigner(SimSet& set);

    // A keyed hash of the message stands in for the signature: the same message always gets the
    // same bytes, and different messages different ones.
    int signMessage(int key, const uint8_t* message, uint32_t messageLength, uint8_t* signature,
                    uint32_t signatureLength) override;
};

}  // namespace sim

#endif
