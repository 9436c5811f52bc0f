#include "SimVideo.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimVideo::SimVideo(SimSet& set)
    : SimSetterDevice(set, "Video", {{"setScreenOffState", Kind::Int, {}}},
                      {{"screenOff", Kind::Int, 0}}) {}

int SimVideo::setScreenOffState(int off) {
    return store("setScreenOffState", "screenOff", {off});
}

}  // namespace sim
