#include "SimShell.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimShell::SimShell(SimSet& set)
    : SimObject(set, "zoshell", {{"zoshellExecuteCmd", Kind::Int, {}}}, {}, false) {}

int SimShell::execute(const char* command, size_t length, int mode, int flags) {
    const std::string text = command != nullptr ? std::string(command, length) : std::string();
    Call call(*this, "zoshellExecuteCmd", {textOrHex(text), length, mode, flags});
    return call.result(0);
}

}  // namespace sim
