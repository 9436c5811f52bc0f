#ifndef SIM_SIMOPERATIONHOURS_H
#define SIM_SIMOPERATIONHOURS_H

#include "sim/SimSet.h"
#include "zo/port/OperationHours.h"

namespace sim {

class SimOperationHours : public zo::port::OperationHours, public SimObject {
  public:
    explicit SimOperationHours(SimSet& set);

    int getOperationTime(int index, uint32_t& value) override;
    int getOperationTimeText(std::string& text) override;
    int clearOperationTime(int index) override;
};

}  // namespace sim

#endif
