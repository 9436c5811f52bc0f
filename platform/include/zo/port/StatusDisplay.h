#ifndef ZO_PORT_STATUSDISPLAY_H
#define ZO_PORT_STATUSDISPLAY_H

#include "zo/port/Object.h"

namespace zo {
namespace port {

// Shows numbered status codes on screen.
class StatusDisplay : public Object {
  public:
    StatusDisplay();
    ~StatusDisplay() override;

    virtual int showStatus(int code) = 0;
    virtual int hideStatus(int code) = 0;
};

}  // namespace port
}  // namespace zo

#endif
