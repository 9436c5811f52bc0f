#ifndef ZO_PORT_FRONTPANEL_H
#define ZO_PORT_FRONTPANEL_H

#include "zo/port/Object.h"

namespace zo {
namespace port {

// The front panel's LEDs. Every operation returns 0 on success.
class FrontPanel : public Object {
  public:
    FrontPanel();
    ~FrontPanel() override;

    // Switches the LED pattern of a use case on or off; use case 8 is the flicker pattern.
    virtual int showUseCase(int useCase) = 0;
    virtual int hideUseCase(int useCase) = 0;
    virtual int setLedState(bool on) = 0;
    virtual int setLedColorState(int color, int status, int flashPwm) = 0;
    virtual int setLogoLedState(bool on) = 0;
};

}  // namespace port
}  // namespace zo

#endif
