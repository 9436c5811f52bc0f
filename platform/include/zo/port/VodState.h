#ifndef ZO_PORT_VODSTATE_H
#define ZO_PORT_VODSTATE_H

#include "zo/port/Object.h"

namespace zo {
namespace port {

// Whether video on demand is enabled on the set.
class VodState : public Object {
  public:
    VodState();
    ~VodState() override;

    // Non-zero when enabled.
    virtual int isVodEnabled() = 0;
};

}  // namespace port
}  // namespace zo

#endif
