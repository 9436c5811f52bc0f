#include "SimCredentialsState.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimCredentialsState::SimCredentialsState(SimSet& set)
    : SimObject(set, "CredentialsState", {{"getCredentialsState", Kind::Int, {}}},
                {{"state", Kind::Int, 0}}) {}

int SimCredentialsState::getCredentialsState() {
    Call call(*this, "getCredentialsState");
    return call.result(stateAs<int>("state"));
}

}  // namespace sim
