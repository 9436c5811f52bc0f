#include "sim/SimSet.h"

#include "SimDevices.h"
#include "zo/host/Host.h"

namespace sim {
namespace {

const char kPierInterfaceName[] = "zorbel.lm.interfaces.port.pier";

}  // namespace

json PortCall::toEvent() const {
    return json{{"event", "port"}, {"object", object},   {"operation", operation},
                {"args", args},    {"outputs", outputs}, {"result", result}};
}

class SimPier;
class SimFactory;

struct SimSet::Objects {
    explicit Objects(SimSet& set);

    boost::shared_ptr<SimPier> pier;
    boost::shared_ptr<SimChassisDescription> chassisDescription;
    boost::shared_ptr<SimSubsystemManager> subsystemManager;
    boost::shared_ptr<SimFactory> factory;
    boost::shared_ptr<SimEventManager> eventManager;
    boost::shared_ptr<SimFrontPanel> frontPanel;
    boost::shared_ptr<SimFactoryManager> factoryManager;
    boost::shared_ptr<SimHdmiSwitch> hdmi;
    boost::shared_ptr<SimOpc> opc;
    boost::shared_ptr<SimAntenna> antenna;
    boost::shared_ptr<SimCredentialsState> credentialsState;
    boost::shared_ptr<SimVodState> vodState;
    boost::shared_ptr<SimUart> uart;
    boost::shared_ptr<SimScreenCapture> screenCapture;
    boost::shared_ptr<SimOledPanel> oledPanel;
    boost::shared_ptr<SimFarField> farField;
    boost::shared_ptr<SimOperationHours> operationHours;
    boost::shared_ptr<SimRemoteControl> remoteControl;
    boost::shared_ptr<SimSystemControl> systemControl;
    boost::shared_ptr<SimZamControl> zamControl;
    boost::shared_ptr<SimVideo> video;
    boost::shared_ptr<SimStatusDisplay> statusDisplay;
    boost::shared_ptr<SimHardwareInfo> hardwareInfo;
    boost::shared_ptr<SimSigner> signer;
    boost::shared_ptr<SimOtherSubject> otherSubject;
    std::unique_ptr<SimShell> shell;
    std::unique_ptr<SimConfig> config;
    std::unique_ptr<SimThreads> threads;
    std::unique_ptr<SimClock> clock;

    std::vector<SimObject*> all;
};

// Hands out `object` when it is present; the call's result names what was handed out.
template <typename T>
boost::shared_ptr<T> handOut(SimObject& from, const char* operation,
                             const boost::shared_ptr<T>& object, json args = json::array());

class SimPier : public zo::port::Pier, public SimObject {
  public:
    SimPier(SimSet& set, SimSet::Objects& objects)
        : SimObject(set, "Pier",
                    {{"getChassisDescription", Kind::Object, {}},
                     {"getSubsystemManager", Kind::Object, {}},
                     {"getFactory", Kind::Object, {}},
                     {"getEventManager", Kind::Object, {}}},
                    {}),
          m_objects(objects) {}

    boost::shared_ptr<zo::port::ChassisDescription> getChassisDescription() override {
        return handOut(*this, "getChassisDescription", m_objects.chassisDescription);
    }
    boost::shared_ptr<zo::port::SubsystemManager> getSubsystemManager() override {
        return handOut(*this, "getSubsystemManager", m_objects.subsystemManager);
    }
    boost::shared_ptr<zo::port::Factory> getFactory() override;
    boost::shared_ptr<zo::port::EventManager> getEventManager() override {
        return handOut(*this, "getEventManager", m_objects.eventManager);
    }

  private:
    SimSet::Objects& m_objects;
};

class SimFactory : public zo::port::Factory, public SimObject {
  public:
    SimFactory(SimSet& set, SimSet::Objects& objects)
        : SimObject(set, "Factory",
                    {{"getFrontPanel", Kind::Object, {}},
                     {"getFactoryManager", Kind::Object, {}},
                     {"getHdmi", Kind::Object, {}},
                     {"getOpc", Kind::Object, {}},
                     {"getAntenna", Kind::Object, {}},
                     {"getCredentialsState", Kind::Object, {}},
                     {"getVodState", Kind::Object, {}},
                     {"getUart", Kind::Object, {}},
                     {"getScreenCapture", Kind::Object, {}},
                     {"getOledPanel", Kind::Object, {}},
                     {"getFarField", Kind::Object, {}},
                     {"getOperationHours", Kind::Object, {}},
                     {"getRemoteControl", Kind::Object, {}},
                     {"getSystemControl", Kind::Object, {}},
                     {"getZamControl", Kind::Object, {}},
                     {"getVideo", Kind::Object, {}},
                     {"getStatusDisplay", Kind::Object, {}},
                     {"getHardwareInfo", Kind::Object, {}},
                     {"getSigner", Kind::Object, {}}},
                    {}),
          m_objects(objects) {}

    boost::shared_ptr<zo::port::FrontPanel> getFrontPanel() override {
        return handOut(*this, "getFrontPanel", m_objects.frontPanel);
    }
    boost::shared_ptr<zo::port::FactoryManager> getFactoryManager() override {
        return handOut(*this, "getFactoryManager", m_objects.factoryManager);
    }
    boost::shared_ptr<zo::port::HdmiSwitch> getHdmi() override {
        return handOut(*this, "getHdmi", m_objects.hdmi);
    }
    boost::shared_ptr<zo::port::Opc> getOpc() override {
        return handOut(*this, "getOpc", m_objects.opc);
    }
    boost::shared_ptr<zo::port::Antenna> getAntenna() override {
        return handOut(*this, "getAntenna", m_objects.antenna);
    }
    boost::shared_ptr<zo::port::CredentialsState> getCredentialsState() override {
        return handOut(*this, "getCredentialsState", m_objects.credentialsState);
    }
    boost::shared_ptr<zo::port::VodState> getVodState() override {
        return handOut(*this, "getVodState", m_objects.vodState);
    }
    boost::shared_ptr<zo::port::Uart> getUart() override {
        return handOut(*this, "getUart", m_objects.uart);
    }
    boost::shared_ptr<zo::port::ScreenCapture> getScreenCapture() override {
        return handOut(*this, "getScreenCapture", m_objects.screenCapture);
    }
    boost::shared_ptr<zo::port::OledPanel> getOledPanel() override {
        return handOut(*this, "getOledPanel", m_objects.oledPanel);
    }
    boost::shared_ptr<zo::port::FarField> getFarField() override {
        return handOut(*this, "getFarField", m_objects.farField);
    }
    boost::shared_ptr<zo::port::OperationHours> getOperationHours() override {
        return handOut(*this, "getOperationHours", m_objects.operationHours);
    }
    boost::shared_ptr<zo::port::RemoteControl> getRemoteControl() override {
        return handOut(*this, "getRemoteControl", m_objects.remoteControl);
    }
    boost::shared_ptr<zo::port::SystemControl> getSystemControl() override {
        return handOut(*this, "getSystemControl", m_objects.systemControl);
    }
    boost::shared_ptr<zo::port::ZamControl> getZamControl() override {
        return handOut(*this, "getZamControl", m_objects.zamControl);
    }
    // The set has one screen, screen 0.
    boost::shared_ptr<zo::port::Video> getVideo(int screen) override {
        return handOut(*this, "getVideo",
                       screen == 0 ? m_objects.video : boost::shared_ptr<SimVideo>(),
                       json::array({screen}));
    }
    boost::shared_ptr<zo::port::StatusDisplay> getStatusDisplay() override {
        return handOut(*this, "getStatusDisplay", m_objects.statusDisplay);
    }
    boost::shared_ptr<zo::port::HardwareInfo> getHardwareInfo() override {
        return handOut(*this, "getHardwareInfo", m_objects.hardwareInfo);
    }
    boost::shared_ptr<zo::port::Signer> getSigner() override {
        return handOut(*this, "getSigner", m_objects.signer);
    }

  private:
    SimSet::Objects& m_objects;
};

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

template <typename T>
boost::shared_ptr<T> handOut(SimObject& from, const char* operation,
                             const boost::shared_ptr<T>& object, json args) {
    return Getter::run(from, operation, object, std::move(args));
}

boost::shared_ptr<zo::port::Factory> SimPier::getFactory() {
    return handOut(*this, "getFactory", m_objects.factory);
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
    zo::host::setHooks(hooks);
    zo::host::registerInterface(kPierInterfaceName,
                                static_cast<zo::port::Pier*>(m_objects->pier.get()));
}

SimSet::~SimSet() {
    // Threads of the service may still run on the simulated objects.
    zo::host::waitForThreads();
    zo::host::unregisterInterface(kPierInterfaceName);
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
        zo::host::unregisterInterface(kPierInterfaceName);
        if (present) {
            zo::host::registerInterface(kPierInterfaceName,
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

void SimSet::emit(const json& event) {
    std::lock_guard<std::mutex> lock(m_listenerMutex);
    if (m_listener) {
        m_listener(event);
    }
}

void SimSet::record(const PortCall& call) {
    {
        std::lock_guard<std::recursive_mutex> lock(m_mutex);
        m_journal.push_back(call);
    }
    emit(call.toEvent());
}

std::vector<PortCall> SimSet::journal() const {
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    return m_journal;
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
        emit(json{{"event", "observer"},
                  {"name", registration.observer->getClassName()},
                  {"status", status}});
    }
    return true;
}

bool SimSet::raiseOledError(uint32_t mask) {
    return m_objects->oledPanel->raiseError(mask);
}

}  // namespace sim
