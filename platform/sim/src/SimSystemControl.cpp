#include "SimSystemControl.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimSystemControl::SimSystemControl(SimSet& set)
    : SimSetterDevice(set, "SystemControl",
                      {{"setPanelPower", Kind::Int, {}}, {"restartByStc", Kind::Int, {}}},
                      {{"panelPower", Kind::Int, 0}, {"restarts", Kind::Int, 0}}) {}

int SimSystemControl::setPanelPower(int value) {
    return store("setPanelPower", "panelPower", {value});
}

int SimSystemControl::restartByStc() {
    Call call(*this, "restartByStc");
    const int status = call.result(0);
    if (status == 0) {
        state("restarts") = stateAs<int>("restarts") + 1;
    }
    return status;
}

}  // namespace sim
