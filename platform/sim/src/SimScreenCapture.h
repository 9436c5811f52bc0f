#ifndef SIM_SIMSCREENCAPTURE_H
#define SIM_SIMSCREENCAPTURE_H

#include "sim/SimSet.h"
#include "zo/port/ScreenCapture.h"

namespace sim {

class SimScreenCapture : public zo::port::ScreenCapture, public SimObject {
  public:
    // The capture buffer the service provides holds this much.
    static const size_t kBufferCapacity = 0x800000;

    explicit SimScreenCapture(SimSet& set);

    int getSupportInfo(boost::shared_ptr<zo::port::screenCaptureSupportType> info) override;
    bool isAvailable(zo::port::screenCaptureType_enum type) override;
    // Fills width x height pixels of the chosen pattern: "gradient" (blue across, green down),
    // "checker" (8-pixel squares), "solid" (the color bytes, blue-green-red-alpha) or "testcard"
    // (TestCard.h); "none" leaves the buffer as the caller handed it over.
    bool capture(zo::port::screenCaptureType_enum type,
                 boost::shared_ptr<zo::port::screenCaptureData> data) override;
};

}  // namespace sim

#endif
