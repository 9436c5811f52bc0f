// OLED panel factory tuning: the AS run, manual gains and the LEA and CPC switches.
#include "Application.h"

#include <cstdint>

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

int Application::startOledAs(frame::MsgIds&, const frame::TransportInfo&) {
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): called \n");
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        return 0;
    }
    return panel->startAs();
}

int Application::saveOledManualGain(frame::MsgIds&, const frame::TransportInfo&, unsigned int gain0,
                                    unsigned int gain1, unsigned int gain2, unsigned int gain3) {
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): called: %d %d %d %d\n", gain0, gain1, gain2, gain3);
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        return -1;
    }
    return panel->saveManualGain(lowByte(gain0), lowByte(gain1), lowByte(gain2), lowByte(gain3));
}

int Application::setOledManualGainSetting(frame::MsgIds&, const frame::TransportInfo&,
                                          unsigned int index, unsigned int value) {
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): called: %d %d\n", index, value);
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        return -1;
    }
    return panel->setManualGainSetting(index, value);
}

int Application::getOledManualGainSetting(frame::MsgIds&, const frame::TransportInfo&,
                                          unsigned int index) {
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): called\n");
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        return 0;
    }
    return panel->getManualGainSetting(index);
}

int Application::setOledManualGainEnable(frame::MsgIds&, const frame::TransportInfo&, int enable) {
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): called: %d \n", enable);
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        return -1;
    }
    return panel->setManualGainEnable(lowByte(static_cast<unsigned int>(enable)));
}

int Application::getOledManualGainEnable(frame::MsgIds&, const frame::TransportInfo&) {
    SYSCTRL_LOG(LOG_NOTICE, "%s:%d:%s(): called \n");
    const boost::shared_ptr<zo::port::OledPanel> panel =
        portObject(&zo::port::Factory::getOledPanel);
    if (!panel) {
        return 0;
    }
    return panel->getManualGainEnable();
}

// The switches report the state the panel took, read back after setting it, not the one asked.

int Application::setOledLeaEnable(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                  unsigned char enable) {
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

int Application::setOledCpcEnable(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                  unsigned char enable) {
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

}  // namespace sysctrlservice
