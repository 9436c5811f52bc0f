#include "SimThreads.h"

#include <algorithm>
#include <cstring>

#include "zo/host/Host.h"

namespace sim {

SimThreads::SimThreads(SimSet& set)
    : SimObject(set, "thread", {{"create", Kind::Int, {}}, {"sleep", Kind::Void, {}}}, {}, false) {}

int SimThreads::create(zo::thread::Entry entry, void* argument, int priority, const char* name) {
    Call call(*this, "create", {name != nullptr ? name : "", priority});
    if (call.hasScriptedResult()) {
        return call.result(0);
    }
    return call.result(zo::host::startThread(entry, argument, name));
}

void SimThreads::sleep(unsigned int milliseconds) {
    Call call(*this, "sleep", {milliseconds});
    call.done(json());
}

}  // namespace sim
