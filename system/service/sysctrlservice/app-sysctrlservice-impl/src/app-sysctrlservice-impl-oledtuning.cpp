// OLED panel factory tuning: the AS run, manual gains and the LEA and CPC switches.
#include "Application.h"

#include <cstdint>

#include "EntryGuard.h"
#include "StatusCodes.h"
#include "SysctrlLog.h"
#include "zo/port/Factory.h"
#include "zo/port/OledPanel.h"

namespace sysctrlservice {

namespace {

// The panel's 8-bit registers take the low byte of what the caller sent.
uint8_t lowByte(unsigned int value) {
    return static_cast<uint8_t>(value & 0xFFu);
}

}  // namespace

// Without a panel the reads report the value 0 and the writes report failure (-1).

int Application::startOledAs(frame::MsgIds&, const frame::TransportInfo&) try {
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): called \n");
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        return 0;
    }
    return panel->startAs();
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::saveOledManualGain(frame::MsgIds&, const frame::TransportInfo&, unsigned int gain0,
                                    unsigned int gain1, unsigned int gain2,
                                    unsigned int gain3) try {
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): called: %d %d %d %d\n", gain0, gain1, gain2, gain3);
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        return -1;
    }
    return panel->saveManualGain(lowByte(gain0), lowByte(gain1), lowByte(gain2), lowByte(gain3));
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::setOledManualGainSetting(frame::MsgIds&, const frame::TransportInfo&,
                                          unsigned int index, unsigned int value) try {
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): called: %d %d\n", index, value);
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        return -1;
    }
    return panel->setManualGainSetting(index, value);
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::getOledManualGainSetting(frame::MsgIds&, const frame::TransportInfo&,
                                          unsigned int index) try {
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): called\n");
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        return 0;
    }
    return panel->getManualGainSetting(index);
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::setOledManualGainEnable(frame::MsgIds&, const frame::TransportInfo&,
                                         int enable) try {
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): called: %d \n", enable);
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        return -1;
    }
    return panel->setManualGainEnable(lowByte(static_cast<unsigned int>(enable)));
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::getOledManualGainEnable(frame::MsgIds&, const frame::TransportInfo&) try {
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): called \n");
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        return 0;
    }
    return panel->getManualGainEnable();
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

// The switches report the state the panel took, read back after setting it, not the one asked.

int Application::setOledLeaEnable(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                  unsigned char enable) try {
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        return 0;
    }
    panel->setLeaEnable(enable);
    const unsigned char state = panel->getLeaEnable();
    deliverToClients(&ClientInterface::setOledLeaEnableResult, msgIds, transport, state);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::setOledCpcEnable(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                  unsigned char enable) try {
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        return 0;
    }
    panel->setCpcEnable(enable);
    const unsigned char state = panel->getCpcEnable();
    deliverToClients(&ClientInterface::setOledCpcEnableResult, msgIds, transport, state);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

}  // namespace sysctrlservice
