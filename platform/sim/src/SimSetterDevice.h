#ifndef SIM_SIMSETTERDEVICE_H
#define SIM_SIMSETTERDEVICE_H

#include "sim/SimSet.h"

namespace sim {

// A device whose operations each store their arguments under a key and return 0.
class SimSetterDevice : public SimObject {
  public:
    using SimObject::SimObject;

  protected:
    int store(const char* operation, const char* key, const json& args);
};

}  // namespace sim

#endif
