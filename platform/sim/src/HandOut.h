#ifndef SIM_HANDOUT_H
#define SIM_HANDOUT_H

#include "sim/SimObject.h"

namespace sim {

// SimObject::Call is protected; this friend-free helper runs one through a tiny subclass.
class Getter : public SimObject {
  public:
    template <typename T>
    static boost::shared_ptr<T> run(SimObject& from, const char* operation,
                                    const boost::shared_ptr<T>& object, json args) {
        Call call(from, operation, std::move(args));
        const bool present = object && object->isPresent();
        call.done(present ? json(object->simName()) : json());
        return present ? object : boost::shared_ptr<T>();
    }
};

// Hands out `object` when it is present; the call's result names what was handed out.
template <typename T>
boost::shared_ptr<T> handOut(SimObject& from, const char* operation,
                             const boost::shared_ptr<T>& object, json args = json::array()) {
    return Getter::run(from, operation, object, std::move(args));
}

}  // namespace sim

#endif
