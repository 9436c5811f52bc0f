#ifndef SIM_SIMSETOBJECTS_H
#define SIM_SIMSETOBJECTS_H

#include <memory>
#include <vector>

#include "SimAntenna.h"
#include "SimClock.h"
#include "SimConfig.h"
#include "SimCredentialsState.h"
#include "SimEvent.h"
#include "SimFactory.h"
#include "SimFactoryManager.h"
#include "SimFarField.h"
#include "SimFrontPanel.h"
#include "SimHardwareInfo.h"
#include "SimHdmiSwitch.h"
#include "SimOledPanel.h"
#include "SimOpc.h"
#include "SimOperationHours.h"
#include "SimPier.h"
#include "SimRemoteControl.h"
#include "SimScreenCapture.h"
#include "SimShell.h"
#include "SimSigner.h"
#include "SimStatusDisplay.h"
#include "SimSystemControl.h"
#include "SimThreads.h"
#include "SimUart.h"
#include "SimVideo.h"
#include "SimVodState.h"
#include "SimZamControl.h"

namespace sim {

// Every object of the set, owned here; the Pier and the factory hand them out from here.
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

}  // namespace sim

#endif
