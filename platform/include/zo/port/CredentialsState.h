#ifndef ZO_PORT_CREDENTIALSSTATE_H
#define ZO_PORT_CREDENTIALSSTATE_H

#include "zo/port/Object.h"

namespace zo {
namespace port {

// Which device credentials are installed.
class CredentialsState : public Object {
  public:
    CredentialsState();
    ~CredentialsState() override;

    // 0 production, 1 test, -1 none; other values are the platform's.
    virtual int getCredentialsState() = 0;
};

}  // namespace port
}  // namespace zo

#endif
