// The application's spine: the plug-in entries, the life cycle, clients and platform events.
#include "Application.h"

#include <algorithm>
#include <memory>

#include "EntryGuard.h"
#include "PortObserver.h"
#include "StatusCodes.h"
#include "SysctrlLog.h"
#include "zo/Mutex.h"
#include "zo/port/Antenna.h"
#include "zo/port/CredentialsState.h"
#include "zo/port/Factory.h"
#include "zo/port/FactoryManager.h"
#include "zo/port/FarField.h"
#include "zo/port/FrontPanel.h"
#include "zo/port/HdmiSwitch.h"
#include "zo/port/OledPanel.h"
#include "zo/port/Opc.h"
#include "zo/port/OperationHours.h"
#include "zo/port/Pier.h"
#include "zo/port/RemoteControl.h"
#include "zo/port/ScreenCapture.h"
#include "zo/port/Uart.h"
#include "zo/port/VodState.h"

frame::AbstractApplication** CreateSysctrlserviceApplication() try {
    SYSCTRL_LOG(sysctrlservice::LOG_NOTICE, "%s:%d:%s(): Called.\n");
    std::unique_ptr<frame::AbstractApplication*[]> applications(
        new frame::AbstractApplication*[2]());
    applications[0] = new sysctrlservice::Application();
    return applications.release();
}
SYSCTRL_ENTRY_GUARD(nullptr)

frame::AbstractApplication** frameCreateApplicationArray() {
    return CreateSysctrlserviceApplication();
}

namespace sysctrlservice {

Application::Application() : m_pier(nullptr), m_maintFlags(0), m_maintRunning(false) {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");
}

Application::~Application() {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");
    unregisterInterface(kServiceInterfaceName);
    // The members go in the reverse of their declaration: the Pier's interface reference, the
    // records, the clients, the observer, then the port objects.
}

int32_t Application::performSetupDone() try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");

    int32_t status = frame::AbstractApplication::performSetupDone();
    if (status < 0) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Parent class performSetupDone() returned %d.\n",
                    status);
        return status;
    }

    status = getInterfaceReference(zo::port::kPierInterfaceName, m_pierInterface);
    if (status < 0 || !m_pierInterface) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Unable to obtain pier interface: %d.\n", status);
        return kStatusNoEntry;
    }
    m_pier = static_cast<zo::port::Pier*>(m_pierInterface->getImplementation());
    if (m_pier == nullptr) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Unable to obtain pier interface: %d.\n", status);
        return kStatusNoEntry;
    }

    m_chassisDescription = m_pier->getChassisDescription();
    m_subsystemManager = m_pier->getSubsystemManager();
    m_factory = m_pier->getFactory();

    // An absent object leaves its member empty; each operation decides what that means.
    if (m_factory) {
        m_frontPanel = m_factory->getFrontPanel();
        m_factoryManager = m_factory->getFactoryManager();
        m_hdmi = m_factory->getHdmi();
        m_opc = m_factory->getOpc();
        boost::atomic_store(&m_antenna, m_factory->getAntenna());
        m_credentialsState = m_factory->getCredentialsState();
        m_vodState = m_factory->getVodState();
        m_uart = m_factory->getUart();
        m_screenCapture = m_factory->getScreenCapture();
    }
    m_eventManager = m_pier->getEventManager();
    if (m_factory) {
        m_oledPanel = m_factory->getOledPanel();
        m_farField = m_factory->getFarField();
        m_operationHours = m_factory->getOperationHours();
        m_remoteControl = m_factory->getRemoteControl();
    }

    status = registerInterface(kServiceInterfaceName, static_cast<ServiceInterface*>(this));
    if (status < 0) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Unable to register interface: %d.\n", status);
        return status;
    }
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int32_t Application::performStarting() try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");

    const int32_t status = frame::AbstractApplication::performStarting();
    if (status < 0) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Parent class performStarting() returned %d.\n", status);
        return status;
    }

    if (m_oledPanel) {
        if (!m_eventManager) {
            // Without an event manager no observer is attached, not even the operating-time one.
            loadPMRecords();
            return 0;
        }
        m_observer.reset(new PortObserver("OledObserver", this));
        m_eventManager->registerObserver(m_oledPanel, m_observer);
        m_oledPanel->registerErrorCallback(&Application::oledErrorCallback, this);
        // An error present at start is handled like one that arrives later by event.
        oledErrorCallback(m_oledPanel->getErrorStatus(), this);
    }

    if (m_operationHours && m_eventManager) {
        // The event manager keeps the OLED observer alive when this handle replaces it.
        m_observer.reset(new PortObserver("OptimeObserver", this));
        m_eventManager->registerObserver(m_operationHours, m_observer);
    }

    loadPMRecords();
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int32_t Application::performStopping() try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");

    const int32_t status = frame::AbstractApplication::performStopping();
    if (status < 0) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Parent class performStopping() returned %d.\n", status);
        return status;
    }
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

// ServiceInterface: clients

int Application::addClient(ClientInterfacePtr client) try {
    if (!client) {
        return kStatusInvalid;
    }
    zo::MutexGuard guard(getApplicationLock());
    const auto found = std::find(m_clients.begin(), m_clients.end(), client);
    if (found != m_clients.end()) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Client already exists.\n");
        return kStatusExists;
    }
    m_clients.push_back(client);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::removeClient(ClientInterfacePtr client) try {
    zo::MutexGuard guard(getApplicationLock());
    const auto found = std::find(m_clients.begin(), m_clients.end(), client);
    if (!client || found == m_clients.end()) {
        return kStatusNoEntry;
    }
    m_clients.erase(found);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

std::vector<ClientInterfacePtr> Application::copyClients() {
    zo::MutexGuard guard(getApplicationLock());
    return m_clients;
}

// Platform events

int Application::notify(zo::port::eventClass_enum eventClass,
                        boost::shared_ptr<zo::port::EventSubject> subject, int eventId) {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called, eventId:0x%x\n", eventId);

    if (eventClass == zo::port::EVENT_CLASS_OLED_PANEL) {
        const boost::shared_ptr<zo::port::OledPanel> panel =
            boost::dynamic_pointer_cast<zo::port::OledPanel>(subject);
        if (!panel) {
            return kStatusInvalid;
        }
        if ((eventId & 0x100) != 0) {
            updateOledPanelInfo();
        }
        if ((eventId & 0x200) != 0) {
            oledErrorCallback(panel->getErrorStatus(), this);
        }
        return 0;
    }

    if (eventClass != zo::port::EVENT_CLASS_OPERATION_HOURS || (eventId & 0x1) == 0) {
        return kStatusFailed;
    }
    const boost::shared_ptr<zo::port::OperationHours> operationHours =
        boost::dynamic_pointer_cast<zo::port::OperationHours>(subject);
    if (!operationHours) {
        return kStatusInvalid;
    }
    const OptimeInfo info = readOptimeInfo(*operationHours);
    deliverUnsolicited(&ClientInterface::requestOptimeInfoResult, info);
    return 0;
}

OptimeInfo Application::readOptimeInfo(zo::port::OperationHours& operationHours) {
    OptimeInfo info;
    for (int index = 0; index < 5; ++index) {
        operationHours.getOperationTime(index, info.time[index]);
    }
    operationHours.getOperationTimeText(info.text);
    return info;
}

}  // namespace sysctrlservice
