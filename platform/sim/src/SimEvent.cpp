#include "SimEvent.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimOtherSubject::SimOtherSubject() : zo::port::EventSubject("OtherSubject") {}

SimEventManager::SimEventManager(SimSet& set)
    : SimObject(set, "EventManager", {{"registerObserver", Kind::Int, {}}},
                {{"observers", Kind::Any, json::array()}}) {}

int SimEventManager::registerObserver(boost::shared_ptr<zo::port::EventSubject> subject,
                                      boost::shared_ptr<zo::port::EventObserver> observer) {
    const json subjectName = subject ? json(subject->getClassName()) : json();
    const json observerName = observer ? json(observer->getClassName()) : json();
    Call call(*this, "registerObserver", {subjectName, observerName});
    const int status = call.result(observer ? 0 : -22);
    if (status == 0 && observer) {
        m_registrations.push_back(Registration{subject, observer});
        state("observers").push_back({{"subject", subjectName}, {"observer", observerName}});
    }
    return status;
}

void SimEventManager::reset() {
    std::lock_guard<std::recursive_mutex> lock(simSet().mutex());
    SimObject::reset();
    m_registrations.clear();
}

std::vector<SimEventManager::Registration> SimEventManager::registrations() const {
    return m_registrations;
}

}  // namespace sim
