#include "sim/SimSet.h"

#include "SimSetObjects.h"
#include "zo/host/Host.h"

namespace sim {
json PortCall::toEvent() const {
    return json{{"event", "port"}, {"object", object},   {"operation", operation},
                {"args", args},    {"outputs", outputs}, {"result", result}};
}

SimSet::Objects::Objects(SimSet& set)
    : pier(new SimPier(set, *this)),
      chassisDescription(new SimChassisDescription(set)),
      subsystemManager(new SimSubsystemManager(set)),
      factory(new SimFactory(set, *this)),
      eventManager(new SimEventManager(set)),
      frontPanel(new SimFrontPanel(set)),
      factoryManager(new SimFactoryManager(set)),
      hdmi(new SimHdmiSwitch(set)),
      opc(new SimOpc(set)),
      antenna(new SimAntenna(set)),
      credentialsState(new SimCredentialsState(set)),
      vodState(new SimVodState(set)),
      uart(new SimUart(set)),
      screenCapture(new SimScreenCapture(set)),
      oledPanel(new SimOledPanel(set)),
      farField(new SimFarField(set)),
      operationHours(new SimOperationHours(set)),
      remoteControl(new SimRemoteControl(set)),
      systemControl(new SimSystemControl(set)),
      zamControl(new SimZamControl(set)),
      video(new SimVideo(set)),
      statusDisplay(new SimStatusDisplay(set)),
      hardwareInfo(new SimHardwareInfo(set)),
      signer(new SimSigner(set)),
      otherSubject(new SimOtherSubject()),
      shell(new SimShell(set)),
      config(new SimConfig(set)),
      threads(new SimThreads(set)),
      clock(new SimClock(set)) {
    all = {pier.get(),
           chassisDescription.get(),
           subsystemManager.get(),
           factory.get(),
           eventManager.get(),
           frontPanel.get(),
           remoteControl.get(),
           systemControl.get(),
           zamControl.get(),
           oledPanel.get(),
           opc.get(),
           uart.get(),
           farField.get(),
           factoryManager.get(),
           hdmi.get(),
           antenna.get(),
           screenCapture.get(),
           operationHours.get(),
           statusDisplay.get(),
           video.get(),
           hardwareInfo.get(),
           signer.get(),
           credentialsState.get(),
           vodState.get(),
           shell.get(),
           config.get(),
           threads.get(),
           clock.get()};
}

SimSet::SimSet() : m_objects(new Objects(*this)) {
    zo::host::Hooks hooks;
    Objects* objects = m_objects.get();
    hooks.executeShell = [objects](const char* command, size_t length, int mode, int flags) {
        return objects->shell->execute(command, length, mode, flags);
    };
    hooks.readInt = [objects](const std::string& file, const std::string& section,
                              const std::string& key, int& value) {
        return objects->config->readInt(file, section, key, value);
    };
    hooks.createThread = [objects](zo::thread::Entry entry, void* argument, int priority,
                                   const char* name) {
        return objects->threads->create(entry, argument, priority, name);
    };
    hooks.getUtcTime = [objects]() { return objects->clock->getUtcTime(); };
    hooks.sleep = [objects](unsigned int milliseconds) { objects->threads->sleep(milliseconds); };
    zo::host::setHooks(hooks);
    zo::host::registerInterface(zo::port::kPierInterfaceName,
                                static_cast<zo::port::Pier*>(m_objects->pier.get()));
}

SimSet::~SimSet() {
    // Threads of the service may still run on the simulated objects.
    zo::host::waitForThreads();
    zo::host::unregisterInterface(zo::port::kPierInterfaceName);
    zo::host::clearHooks();
}

std::vector<SimObject*> SimSet::objects() const {
    return m_objects->all;
}

SimObject* SimSet::find(const std::string& name) const {
    for (SimObject* object : m_objects->all) {
        if (object->simName() == name) {
            return object;
        }
    }
    return nullptr;
}

SimObject* SimSet::findOrExplain(const std::string& name, std::string& error) const {
    SimObject* found = find(name);
    if (found == nullptr) {
        error = "no simulated object " + name;
    }
    return found;
}

SimObject* SimSet::findMember(const std::string& text, std::string& member,
                              std::string& error) const {
    const size_t dot = text.find('.');
    if (dot == std::string::npos || dot == 0 || dot + 1 == text.size()) {
        error = "expected Object.name, got \"" + text + "\"";
        return nullptr;
    }
    member = text.substr(dot + 1);
    return findOrExplain(text.substr(0, dot), error);
}

bool SimSet::setPresent(const std::string& object, bool present, std::string& error) {
    SimObject* found = findOrExplain(object, error);
    if (found == nullptr) {
        return false;
    }
    if (!found->canBeAbsent()) {
        error = object + " is always present";
        return false;
    }
    found->setPresent(present);
    if (found == m_objects->pier.get()) {
        zo::host::unregisterInterface(zo::port::kPierInterfaceName);
        if (present) {
            zo::host::registerInterface(zo::port::kPierInterfaceName,
                                        static_cast<zo::port::Pier*>(m_objects->pier.get()));
        }
    }
    return true;
}

bool SimSet::setAnswer(const std::string& objectOperation, const json& result, const json& outputs,
                       std::string& error) {
    std::string operation;
    SimObject* found = findMember(objectOperation, operation, error);
    return found != nullptr && found->setAnswer(operation, result, outputs, error);
}

bool SimSet::clearAnswer(const std::string& objectOperation, std::string& error) {
    std::string operation;
    SimObject* found = findMember(objectOperation, operation, error);
    return found != nullptr && found->clearAnswer(operation, error);
}

bool SimSet::setThrow(const std::string& objectOperation, const std::string& what,
                      std::string& error) {
    std::string operation;
    SimObject* found = findMember(objectOperation, operation, error);
    return found != nullptr && found->setThrow(operation, what, error);
}

bool SimSet::setState(const std::string& objectKey, const json& value, std::string& error) {
    std::string key;
    SimObject* found = findMember(objectKey, key, error);
    return found != nullptr && found->setState(key, value, error);
}

json SimSet::getState(const std::string& objectKey) const {
    std::string key;
    std::string error;
    SimObject* found = findMember(objectKey, key, error);
    return found != nullptr ? found->getState(key) : json();
}

void SimSet::setListener(Listener listener) {
    std::lock_guard<std::mutex> lock(m_listenerMutex);
    m_listener = std::move(listener);
}

bool SimSet::hasListener() const {
    std::lock_guard<std::mutex> lock(m_listenerMutex);
    return static_cast<bool>(m_listener);
}

void SimSet::emit(const json& event) {
    std::lock_guard<std::mutex> lock(m_listenerMutex);
    if (m_listener) {
        m_listener(event);
    }
}

void SimSet::record(const PortCall& call) {
    {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        if (m_journalLimit > 0) {
            if (m_journal.size() >= m_journalLimit) {
                m_journal.pop_front();
            }
            m_journal.push_back(call);
        }
    }
    // The event is made only for a listener: without one a call costs no JSON of its own.
    std::lock_guard<std::mutex> lock(m_listenerMutex);
    if (m_listener) {
        m_listener(call.toEvent());
    }
}

std::vector<PortCall> SimSet::journal() const {
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    return std::vector<PortCall>(m_journal.begin(), m_journal.end());
}

std::vector<PortCall> SimSet::calls(const std::string& object, const std::string& operation) const {
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    std::vector<PortCall> selected;
    for (const PortCall& call : m_journal) {
        if (call.object == object && (operation.empty() || call.operation == operation)) {
            selected.push_back(call);
        }
    }
    return selected;
}

void SimSet::clearJournal() {
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    m_journal.clear();
}

size_t SimSet::journalLimit() const {
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    return m_journalLimit;
}

void SimSet::setJournalLimit(size_t limit) {
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    m_journalLimit = limit;
    while (m_journal.size() > m_journalLimit) {
        m_journal.pop_front();
    }
}

bool SimSet::fireEvent(const std::string& subject, int eventClass, int eventId,
                       std::vector<Delivery>& deliveries, std::string& error) {
    boost::shared_ptr<zo::port::EventSubject> target;
    bool everyObserver = false;
    if (subject == "oledPanel") {
        target = m_objects->oledPanel;
    } else if (subject == "operationHours") {
        target = m_objects->operationHours;
    } else if (subject == "other") {
        target = m_objects->otherSubject;
        everyObserver = true;
    } else if (subject == "none") {
        everyObserver = true;
    } else {
        error = "unknown event subject " + subject +
                " (expected oledPanel, operationHours, none or other)";
        return false;
    }

    std::vector<SimEventManager::Registration> registrations;
    {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        registrations = m_objects->eventManager->registrations();
    }
    deliveries.clear();
    for (const SimEventManager::Registration& registration : registrations) {
        if (!everyObserver && registration.subject != target) {
            continue;
        }
        const int status = registration.observer->onEvent(
            static_cast<zo::port::eventClass_enum>(eventClass), target, eventId);
        deliveries.push_back(Delivery{registration.observer->getClassName(), status});
        if (hasListener()) {
            emit(json{{"event", "observer"},
                      {"name", registration.observer->getClassName()},
                      {"status", status}});
        }
    }
    return true;
}

bool SimSet::raiseOledError(uint32_t mask) {
    return m_objects->oledPanel->raiseError(mask);
}

}  // namespace sim
