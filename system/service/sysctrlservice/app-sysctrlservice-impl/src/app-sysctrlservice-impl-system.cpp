// System restart, panel power and the boot and hardware options.
#include "Application.h"

#include <atomic>

#include "EntryGuard.h"
#include "StatusCodes.h"
#include "SysctrlLog.h"
#include "tvConfig/ConfigUtil.h"
#include "zo/port/Factory.h"
#include "zo/port/OledPanel.h"
#include "zo/port/SystemControl.h"
#include "zo/port/ZamControl.h"

namespace sysctrlservice {

namespace {

const char kModelConfigFile[] = "/quentadata/model/config/config.ini";
const char kFeatureSection[] = "TVFeature";
const char kScreenTypeKey[] = "ScreenType";

// The panel type never changes while the set runs, so it is read once per process; -1 means not
// read yet, and a failed read leaves it so and is tried again on the next call. Two first calls at
// once may both read the file; they store the same value.
std::atomic<int> g_screenType(-1);
const int kScreenTypeOled = 1;

}  // namespace

int Application::restartSystem(frame::MsgIds&, const frame::TransportInfo&) try {
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    const boost::shared_ptr<zo::port::SystemControl> systemControl =
        portObject(&zo::port::Factory::getSystemControl);

    // Any panel the factory hands out is switched off before the restart, whatever its type.
    if (panel) {
        SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): OLED turnOff panel.\n");
        panel->turnOff();
    }
    if (!systemControl) {
        return 0;
    }
    const int result = systemControl->restartByStc();
    if (result != 0) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Restart system by STC failed, ret = %d.\n",
                    result);
        return 0;
    }
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Restart system by STC successfully\n");
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::controlPanelPower(frame::MsgIds&, const frame::TransportInfo&, int off) try {
    int type = g_screenType.load();
    if (type == -1) {
        // The cache keeps whatever the utility leaves in the value, even after a failed read.
        if (tvConfig::ConfigUtil::instance().readInt(kModelConfigFile, kFeatureSection,
                                                     kScreenTypeKey, type) == 0) {
            SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): read ScreenType failed\n");
        }
        g_screenType.store(type);
    }
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): set panel power %d, ScreenType %d \n", off, type);

    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    const boost::shared_ptr<zo::port::SystemControl> systemControl =
        portObject(&zo::port::Factory::getSystemControl);

    // An OLED panel is switched by the panel object itself; there the argument means "off".
    if (panel && type == kScreenTypeOled) {
        if (off != 0) {
            SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): OLED turnOff panel.\n");
            panel->turnOff();
            return 0;
        }
        SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): OLED turnOn panel.\n");
        panel->turnOn();
        return 0;
    }
    // Anything else goes to the standby controller, whose sense of the argument is its own.
    if (systemControl) {
        systemControl->setPanelPower(off);
    }
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

// The ZAM options: a set without the ZAM object ignores them silently.

int Application::setBootEnvDbtable(frame::MsgIds&, const frame::TransportInfo&, int value) try {
    const boost::shared_ptr<zo::port::ZamControl> zam =
        portObject(&zo::port::Factory::getZamControl);
    if (!zam) {
        return 0;
    }
    const int result = zam->setBootEnvDbtable(value);
    if (result != 0) {
        SYSCTRL_LOG(LOG_PORT_ERROR,
                    "%s:%d:%s(): Set Boot environment db_table to ZAM failed, ret = %d.\n", result);
    }
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::controlComEnabled(frame::MsgIds&, const frame::TransportInfo&, int value) try {
    const boost::shared_ptr<zo::port::ZamControl> zam =
        portObject(&zo::port::Factory::getZamControl);
    if (!zam) {
        return 0;
    }
    const int result = zam->setComEnabled(value);
    if (result != 0) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): ZAM Set com enable, ret = %d.\n", result);
    }
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::controlUartState(frame::MsgIds&, const frame::TransportInfo&, int value) try {
    const boost::shared_ptr<zo::port::ZamControl> zam =
        portObject(&zo::port::Factory::getZamControl);
    if (!zam) {
        return 0;
    }
    const int result = zam->setUartState(value);
    if (result != 0) {
        // This text has always been handed the result alone, which lands in its first slot
        // ("to %d"); log readers know the line in that form. The second slot gets the result
        // again rather than an unpassed argument, which would print whatever happens to be in
        // the register or stack slot; so "ret = " still shows the true result.
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): ZAM Set uart to %d failed, ret = %d.\n", result,
                    result);
    }
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::setGpioStatus(frame::MsgIds&, const frame::TransportInfo&, int gpio,
                               int value) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called,value:%d.\n", value);
    const boost::shared_ptr<zo::port::ZamControl> zam =
        portObject(&zo::port::Factory::getZamControl);
    if (!zam) {
        return 0;
    }
    const int result = zam->setGpioStatus(gpio, value);
    if (result != 0) {
        // The text says "success" although it is logged on failure only; log readers grep for it
        // as it stands.
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): ZAM set gpio success , ret = %d.\n", result);
    }
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

}  // namespace sysctrlservice
