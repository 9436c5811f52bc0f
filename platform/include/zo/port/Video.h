#ifndef ZO_PORT_VIDEO_H
#define ZO_PORT_VIDEO_H

#include "zo/port/Object.h"

namespace zo {
namespace port {

// The video output of one screen.
class Video : public Object {
  public:
    Video();
    ~Video() override;

    // 0 on success.
    virtual int setScreenOffState(int off) = 0;
};

}  // namespace port
}  // namespace zo

#endif
