#include "SimFrontPanel.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimFrontPanel::SimFrontPanel(SimSet& set)
    : SimObject(set, "FrontPanel",
                {{"showUseCase", Kind::Int, {}},
                 {"hideUseCase", Kind::Int, {}},
                 {"setLedState", Kind::Int, {}},
                 {"setLedColorState", Kind::Int, {}},
                 {"setLogoLedState", Kind::Int, {}}},
                {{"useCases", Kind::IntList, json::array()},
                 {"ledState", Kind::Bool, false},
                 {"ledColor", Kind::IntList, json::array({0, 0, 0})},
                 {"logoLed", Kind::Bool, false}}) {}

int SimFrontPanel::showUseCase(int useCase) {
    Call call(*this, "showUseCase", {useCase});
    const int status = call.result(0);
    json& shown = state("useCases");
    if (status == 0 && std::find(shown.begin(), shown.end(), json(useCase)) == shown.end()) {
        shown.push_back(useCase);
    }
    return status;
}

int SimFrontPanel::hideUseCase(int useCase) {
    Call call(*this, "hideUseCase", {useCase});
    const int status = call.result(0);
    json& shown = state("useCases");
    if (status == 0) {
        shown.erase(std::remove(shown.begin(), shown.end(), json(useCase)), shown.end());
    }
    return status;
}

int SimFrontPanel::setLedState(bool on) {
    return setter("setLedState", "ledState", json(on));
}

int SimFrontPanel::setLedColorState(int color, int status, int flashPwm) {
    return setter("setLedColorState", "ledColor", json::array({color, status, flashPwm}));
}

int SimFrontPanel::setLogoLedState(bool on) {
    return setter("setLogoLedState", "logoLed", json(on));
}

int SimFrontPanel::setter(const char* operation, const char* key, const json& value) {
    Call call(*this, operation, value.is_array() ? value : json::array({value}));
    const int status = call.result(0);
    if (status == 0) {
        state(key) = value;
    }
    return status;
}

}  // namespace sim
