// Front-panel LEDs, remote control and keypad, and the retired compatibility operations.
#include "Application.h"

#include "EntryGuard.h"
#include "StatusCodes.h"
#include "SysctrlLog.h"
#include "zo/port/FrontPanel.h"
#include "zo/port/RemoteControl.h"

namespace sysctrlservice {

namespace {

// The flicker pattern among the front panel's use cases.
const int kFlickerUseCase = 8;

}  // namespace

// The front panel is taken at setup on every set that has one. A set without it gets "failed."
// instead of a call, so that a missing panel never takes the service down.

int Application::ctrlLedColorState(frame::MsgIds&, const frame::TransportInfo&, int ledColor,
                                   int ledStatus, int flashPwm) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Set ledColor: %d ledStatus:%d flashPwm:%d .\n", ledColor,
                ledStatus, flashPwm);
    if (!m_frontPanel) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): failed.\n");
        return 0;
    }
    m_frontPanel->setLedColorState(ledColor, ledStatus, flashPwm);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::ctrluseCaseShow(frame::MsgIds&, const frame::TransportInfo&, int usecase) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Set led  usecase:%d.\n", usecase);
    if (!m_frontPanel) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): failed.\n");
        return 0;
    }
    m_frontPanel->showUseCase(usecase);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::ctrluseCaseHide(frame::MsgIds&, const frame::TransportInfo&, int usecase) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Set led usecase:%d.\n", usecase);
    if (!m_frontPanel) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): failed.\n");
        return 0;
    }
    m_frontPanel->hideUseCase(usecase);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::ctrlGpioState(frame::MsgIds&, const frame::TransportInfo&, int state) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Set ledstatus: %d.\n", state);
    if (!m_frontPanel) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): failed.\n");
        return 0;
    }
    m_frontPanel->setLedState(state != 0);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::ctrlLedFlicker(frame::MsgIds&, const frame::TransportInfo&, int flag) try {
    if (!m_frontPanel) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): failed.\n");
        return 0;
    }
    if (flag == 1) {
        m_frontPanel->showUseCase(kFlickerUseCase);
        return 0;
    }
    m_frontPanel->hideUseCase(kFlickerUseCase);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::ctrlLogoLedGpioStatus(frame::MsgIds&, const frame::TransportInfo&,
                                       int status) try {
    // Logged at the error level on purpose: the logo LED's notice has always been visible there.
    SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Set logo led status: %d.\n", status);
    if (!m_frontPanel) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): failed.\n");
        return 0;
    }
    m_frontPanel->setLogoLedState(status != 0);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::setRemoteControlCode(frame::MsgIds&, const frame::TransportInfo&, int value) try {
    if (!m_remoteControl) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): failed.\n");
        return 0;
    }
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): Remote control code set value: %d.\n", value);
    m_remoteControl->setRemoteControlCode(value);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::setKeypadLock(frame::MsgIds&, const frame::TransportInfo&, int value) try {
    if (!m_remoteControl) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): failed.\n");
        return 0;
    }
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): keypad lock set value: %d.\n", value);
    m_remoteControl->setKeypadLock(value);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::setQuentaRCSwitch(frame::MsgIds&, const frame::TransportInfo&, int value) try {
    if (!m_remoteControl) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): failed.\n");
        return 0;
    }
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): the brand of remote control: %d.\n", value);
    m_remoteControl->setBrandSwitch(value);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

// The retired operations stay in the interface for old callers; they touch no device. Their
// texts end without a line end, as they always have.

int Application::controlPowerMode(frame::MsgIds&, const frame::TransportInfo&,
                                  PowerMode_t mode) try {
    SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Interface has been deprecated, power mode = %d",
                static_cast<int>(mode));
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::setOsdOpacity(frame::MsgIds&, const frame::TransportInfo&, int, int) try {
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): The set opacity API isn't finished!");
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::getOsdOpacity(frame::MsgIds&, const frame::TransportInfo&, int) try {
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): The get opacity API isn't finished!");
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::setQuietBootFlag(frame::MsgIds&, const frame::TransportInfo&, int) try {
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

}  // namespace sysctrlservice
