// OLED panel maintenance runs on a thread of their own.
#include "Application.h"

#include "EntryGuard.h"
#include "StatusCodes.h"
#include "SysctrlLog.h"
#include "tvConfig/ConfigUtil.h"
#include "zo/Thread.h"
#include "zo/port/Factory.h"
#include "zo/port/OledPanel.h"
#include "zo/port/OperationHours.h"
#include "zo/port/StatusDisplay.h"
#include "zo/port/Video.h"

namespace sysctrlservice {
namespace {

// Bits of the flag a caller passes; the others go to the panel unchanged.
const uint32_t kFlagMaintenance = 0x1;
const uint32_t kFlagRefresh = 0x2;
const uint32_t kFlagScreenOff = 0x4;
const uint32_t kFlagForceCycle = 0x8;

// Bits of the run's result.
const int kResultPanelCycle = 0x30;

// Codes on the status display.
const int kStatusMaintenance = 11;
const int kStatusRefresh = 12;
const int kStatusPanelCycle = 16;

// The operating-time counters a run may clear: the result bit that asks for it, the counter, the
// record the clearing leaves, and the counter's name in the trace.
struct CounterClearing {
    int resultBit;
    int counter;
    PMRType record;
    const char* name;
};
const CounterClearing kCounterClearings[] = {
    {0x100, 3, PMR_MAINT_CLEARED, "maint"},
    {0x200, 4, PMR_REFRESH_CLEARED, "refresh"},
};

const int kMaintThreadPriority = -2;
const unsigned int kPanelCyclePauseMilliseconds = 3000;

// The maintenance thread's steps log under the thread's name.
const char kMaintThreadName[] = "oledMaintThread";

// Tells the panel about a care event, when the service holds one.
void markPanelEvent(const boost::shared_ptr<zo::port::OledPanel>& panel, PMRType type) {
    if (panel) {
        panel->markPanelEvent(type);
    }
}

// The board's temperature table, 0 when it cannot be read.
int readTempLut(uint32_t flag) {
    int tempLut = 0;
    if (tvConfig::ConfigUtil::instance().readInt("/quentadata/model/config/board.ini", "OLED",
                                                 "OLED_TempLUT", tempLut) == 0) {
        SYSCTRL_LOG_AS(kMaintThreadName, LOG_PORT_ERROR, "%s:%d:%s(): read OLED_TempLUT failed\n");
        tempLut = 0;
    }
    SYSCTRL_LOG_AS(kMaintThreadName, LOG_TRACE, "%s:%d:%s(): OLED maintance: tmpLUT %d, flag %d\n",
                   tempLut, static_cast<int>(flag));
    return tempLut;
}

// Runs the panel's maintenance under its status code and, when the result or the caller asks for
// it and a display can show it, the panel cycle with its pause. Returns the run's result.
int runOnPanel(zo::port::OledPanel& panel,
               const boost::shared_ptr<zo::port::StatusDisplay>& display, uint32_t flag,
               int statusCode) {
    SYSCTRL_LOG_AS(kMaintThreadName, LOG_TRACE, "%s:%d:%s(): oled maintenance begin\n");
    if (display) {
        display->showStatus(statusCode);
    } else {
        SYSCTRL_LOG_AS(kMaintThreadName, LOG_PORT_ERROR,
                       "%s:%d:%s(): Cannot get StatusDisplay object\n");
    }
    const int result = panel.runMaintenance(flag);
    SYSCTRL_LOG_AS(kMaintThreadName, LOG_TRACE, "%s:%d:%s(): oled maintenance end, ret = %d\n",
                   result);
    if (!display) {
        // Without a status display nobody would see the cycle, so it is left out.
        return result;
    }
    const bool cycle = (result & kResultPanelCycle) != 0 || (flag & kFlagForceCycle) != 0;
    if (!cycle) {
        display->hideStatus(statusCode);
        return result;
    }
    display->showStatus(kStatusPanelCycle);
    display->hideStatus(statusCode);
    panel.panelCycleBegin();
    zo::thread::sleep(kPanelCyclePauseMilliseconds);
    panel.panelCycleEnd();
    display->hideStatus(kStatusPanelCycle);
    return result;
}

}  // namespace

int Application::controlOledMaint(frame::MsgIds&, const frame::TransportInfo&,
                                  unsigned int flag) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Control Oled maintenance, flag = %d \n",
                static_cast<int>(flag));

    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Cannot get oled panel object\n");
        return 0;
    }

    // Switching the screen off is immediate and served even while a run is under way.
    if ((flag & kFlagScreenOff) != 0) {
        const boost::shared_ptr<zo::port::Video> video =
            portObject(&zo::port::Factory::getVideo, 0);
        if (!video) {
            SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Cannot get Video Object\n");
        } else if (video->setScreenOffState(1) != 0) {
            SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Failed to setScreenOffState\n");
        }
        panel->onScreenOff();
        return 0;
    }

    if (m_maintRunning.exchange(true)) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Maintenance thread already running.\n");
        return 0;
    }
    m_maintFlags = flag;
    // The start's result is deliberately not examined: a thread that did not start leaves the
    // flag set, and every later run is refused with the line above until the service restarts.
    zo::thread::create(nullptr, &Application::oledMaintThread, this, kMaintThreadPriority,
                       "oledMaintThread");
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

void* Application::oledMaintThread(void* argument) {
    Application* const self = static_cast<Application*>(argument);
    if (self == nullptr) {
        return nullptr;
    }
    // Guarded, so it always returns here: the running flag must clear whatever happened.
    self->runOledMaintenance(self->m_maintFlags);
    // The last step: a new run may start from here on.
    self->m_maintRunning = false;
    return nullptr;
}

void Application::runOledMaintenance(uint32_t flag) try {
    const int tempLut = readTempLut(flag);
    const boost::shared_ptr<zo::port::StatusDisplay> display =
        portObject(&zo::port::Factory::getStatusDisplay);
    if (!m_oledPanel) {
        // The records are still kept; only the panel is not told of the events.
        SYSCTRL_LOG_AS(kMaintThreadName, LOG_PORT_ERROR,
                       "%s:%d:%s(): Cannot get oled panel object\n");
    }
    const int statusCode = recordRunStart(flag, tempLut);

    int result = 0;
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        SYSCTRL_LOG_AS(kMaintThreadName, LOG_PORT_ERROR,
                       "%s:%d:%s(): Cannot get oled maintenance object\n");
    } else {
        result = runOnPanel(*panel, display, flag, statusCode);
    }
    clearCounters(result);
    deliverUnsolicited(&ClientInterface::oledMaintResult, result);
}
SYSCTRL_ENTRY_GUARD()

int Application::recordRunStart(uint32_t flag, int tempLut) {
    // With temperature table 1 a run counts as maintenance only when the caller asked for it.
    if (tempLut != 1 || (flag & kFlagMaintenance) != 0) {
        markPanelEvent(m_oledPanel, PMR_MAINT_RUN);
        addPMRecord(PMR_MAINT_RUN);
    }
    if ((flag & kFlagRefresh) == 0) {
        return kStatusMaintenance;
    }
    markPanelEvent(m_oledPanel, PMR_REFRESH_RUN);
    addPMRecord(PMR_REFRESH_RUN);
    return kStatusRefresh;
}

void Application::clearCounters(int result) {
    const boost::shared_ptr<zo::port::OperationHours> hours =
        portObject(&zo::port::Factory::getOperationHours);
    if (!hours) {
        SYSCTRL_LOG_AS(kMaintThreadName, LOG_PORT_ERROR,
                       "%s:%d:%s(): Cannot get operation hours object\n");
        return;
    }
    for (const CounterClearing& clearing : kCounterClearings) {
        if ((result & clearing.resultBit) == 0) {
            continue;
        }
        SYSCTRL_LOG_AS(kMaintThreadName, LOG_TRACE, "%s:%d:%s(): clear panel %s time\n",
                       clearing.name);
        hours->clearOperationTime(clearing.counter);
        markPanelEvent(m_oledPanel, clearing.record);
        addPMRecord(clearing.record);
    }
}

}  // namespace sysctrlservice
