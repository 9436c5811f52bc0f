// The antenna operations: the antenna command language and LNB power.
#include "Application.h"

#include "CommandControl.h"
#include "EntryGuard.h"
#include "StatusCodes.h"
#include "SysctrlLog.h"
#include "antennacontrol.h"
#include "zo/port/Antenna.h"
#include "zo/port/Factory.h"

namespace sysctrlservice {

int Application::controlAntenna(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                const std::string& command) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");
    std::string reply;
    // A missing antenna object needs no test here: the controller then answers with the command's
    // own read or write failure, which ends in "failed." below.
    antennacontrol control(boost::atomic_load(&m_antenna));
    const int status = runCommand([&] { return control.do_cmd(command, reply); }, reply);
    if (status == 0) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): failed.\n");
    }
    deliverToClients(&ClientInterface::controlAntennaResult, msgIds, transport, reply);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::setLnbPower(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                             int value) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called,value:%d.\n", value);
    // Asked anew each time, so a replaced antenna object is used from now on.
    const boost::shared_ptr<zo::port::Antenna> antenna = portObject(&zo::port::Factory::getAntenna);
    // Calls on other threads may be copying the handle meanwhile.
    boost::atomic_store(&m_antenna, antenna);

    int result = 0;
    if (antenna) {
        SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): setLnbPower.\n");
        result = antenna->setLnbPower(value);
    }
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called,return:%d.\n", result);
    deliverToClients(&ClientInterface::setLnbPowerResult, msgIds, transport, result);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

}  // namespace sysctrlservice
