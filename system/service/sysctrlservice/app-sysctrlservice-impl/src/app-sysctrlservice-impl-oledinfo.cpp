// OLED panel information, version, errors and operating-time reports.
#include "Application.h"

#include <stdio.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <vector>

#include "EntryGuard.h"
#include "StatusCodes.h"
#include "SysctrlLog.h"
#include "zo/port/Factory.h"
#include "zo/port/OledPanel.h"
#include "zo/port/OperationHours.h"
#include "zo/port/StatusDisplay.h"

namespace sysctrlservice {
namespace {

// The error bits last shown, for the whole process: the panel reports states, the display and
// the clients want changes.
std::atomic<uint32_t> g_previousErrorMask(0);

// Error bits and the status codes that show them, in the order they are handled.
struct ErrorBit {
    uint32_t bit;
    int statusCode;
};
const ErrorBit kErrorBits[] = {{0x4, 14}, {0x2, 13}, {0x1, 15}};
// A new error of this bit is also a panel-care event.
const uint32_t kErrorBitMarked = 0x2;
const int kErrorPanelEvent = 4;

}  // namespace

int Application::requestOledPanelInfo(frame::MsgIds&, const frame::TransportInfo&) try {
    return updateOledPanelInfo();
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::updateOledPanelInfo() {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): notify\n");
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Cannot get oled panel object\n");
        return 0;
    }
    int32_t info[zo::port::OLED_PANEL_INFO_COUNT] = {};
    panel->getPanelInfo(info);
    const std::vector<int> values(info, info + zo::port::OLED_PANEL_INFO_COUNT);
    deliverUnsolicited(&ClientInterface::oledPanelInfoResult, values);
    return 0;
}

int Application::getPanelVersion(frame::MsgIds& msgIds, const frame::TransportInfo& transport) try {
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        return 0;
    }
    uint8_t version[zo::port::OLED_PANEL_VERSION_SIZE] = {};
    if (panel->getVersion(version) != 0) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Oled getVersion failed.\n");
        // Whatever a failed read left behind is not a version: callers get all zeros.
        std::fill(version, version + sizeof version, 0);
    }
    // The first word most significant byte first, then the three single-byte parts.
    char text[16] = {};
    snprintf(text, sizeof text, "%02x%02x%02x%02x%02x%02x%02x", version[3], version[2], version[1],
             version[0], version[6], version[12], version[21]);
    deliverToClients(&ClientInterface::getPanelVersionResult, msgIds, transport, std::string(text));
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::requestOptimeInfo(frame::MsgIds& msgIds,
                                   const frame::TransportInfo& transport) try {
    OptimeInfo info;
    if (m_operationHours) {
        info = readOptimeInfo(*m_operationHours);
    } else {
        // The caller still gets its answer: the counters as unknown, zero.
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Cannot get operation hours object\n");
    }
    deliverToClients(&ClientInterface::requestOptimeInfoResult, msgIds, transport, info);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

void Application::oledErrorCallback(uint32_t errorMask, void* user) try {
    Application* const self = static_cast<Application*>(user);
    if (self == nullptr) {
        return;
    }
    // Taken and replaced in one step: of callers on several threads reporting the same change,
    // only one sees it as new.
    const uint32_t previous = g_previousErrorMask.exchange(errorMask);
    if (errorMask == previous) {
        return;
    }
    const uint32_t cleared = previous & ~errorMask;
    const uint32_t raised = errorMask & ~previous;

    const boost::shared_ptr<zo::port::StatusDisplay> display =
        self->portObject(&zo::port::Factory::getStatusDisplay);
    if (!display) {
        // The change is handled again on the next report, when the display may be back: the
        // previous mask goes back unless another report has replaced it meanwhile.
        uint32_t expected = errorMask;
        g_previousErrorMask.compare_exchange_strong(expected, previous);
        return;
    }
    for (const ErrorBit& error : kErrorBits) {
        if ((cleared & error.bit) != 0) {
            display->hideStatus(error.statusCode);
        } else if ((raised & error.bit) != 0) {
            display->showStatus(error.statusCode);
            if (error.bit == kErrorBitMarked && self->m_oledPanel) {
                self->m_oledPanel->markPanelEvent(kErrorPanelEvent);
            }
        }
    }
    self->deliverUnsolicited(&ClientInterface::oledErrorResult, static_cast<int>(errorMask));
}
SYSCTRL_ENTRY_GUARD()

}  // namespace sysctrlservice
