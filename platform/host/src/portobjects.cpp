// Constructors and destructors of the port layer's abstract objects: each names its class.
#include "zo/port/Antenna.h"
#include "zo/port/CredentialsState.h"
#include "zo/port/Event.h"
#include "zo/port/Factory.h"
#include "zo/port/FactoryManager.h"
#include "zo/port/FarField.h"
#include "zo/port/FrontPanel.h"
#include "zo/port/HardwareInfo.h"
#include "zo/port/HdmiSwitch.h"
#include "zo/port/OledPanel.h"
#include "zo/port/Opc.h"
#include "zo/port/OperationHours.h"
#include "zo/port/Pier.h"
#include "zo/port/RemoteControl.h"
#include "zo/port/ScreenCapture.h"
#include "zo/port/Signer.h"
#include "zo/port/StatusDisplay.h"
#include "zo/port/SystemControl.h"
#include "zo/port/Uart.h"
#include "zo/port/Video.h"
#include "zo/port/VodState.h"
#include "zo/port/ZamControl.h"

namespace zo {
namespace port {

Object::Object(const std::string& className) : m_className(className) {}
Object::~Object() = default;

std::string Object::getClassName() const {
    return m_className;
}

EventSubject::EventSubject(const std::string& className) : Object(className) {}
EventSubject::~EventSubject() = default;

EventObserver::EventObserver(const std::string& name) : Object(name) {}
EventObserver::~EventObserver() = default;

OledPanel::OledPanel() : EventSubject("OledPanel") {}
OledPanel::~OledPanel() = default;

OperationHours::OperationHours() : EventSubject("OperationHours") {}
OperationHours::~OperationHours() = default;

ChassisDescription::ChassisDescription() : Object("ChassisDescription") {}
ChassisDescription::~ChassisDescription() = default;

SubsystemManager::SubsystemManager() : Object("SubsystemManager") {}
SubsystemManager::~SubsystemManager() = default;

EventManager::EventManager() : Object("EventManager") {}
EventManager::~EventManager() = default;

Pier::Pier() : Object("Pier") {}
Pier::~Pier() = default;

Factory::Factory() : Object("Factory") {}
Factory::~Factory() = default;

FrontPanel::FrontPanel() : Object("FrontPanel") {}
FrontPanel::~FrontPanel() = default;

RemoteControl::RemoteControl() : Object("RemoteControl") {}
RemoteControl::~RemoteControl() = default;

SystemControl::SystemControl() : Object("SystemControl") {}
SystemControl::~SystemControl() = default;

ZamControl::ZamControl() : Object("ZamControl") {}
ZamControl::~ZamControl() = default;

Opc::Opc() : Object("Opc") {}
Opc::~Opc() = default;

Uart::Uart() : Object("Uart") {}
Uart::~Uart() = default;

FarField::FarField() : Object("FarField") {}
FarField::~FarField() = default;

FactoryManager::FactoryManager() : Object("FactoryManager") {}
FactoryManager::~FactoryManager() = default;

HdmiSwitch::HdmiSwitch() : Object("HdmiSwitch") {}
HdmiSwitch::~HdmiSwitch() = default;

Antenna::Antenna() : Object("Antenna") {}
Antenna::~Antenna() = default;

ScreenCapture::ScreenCapture() : Object("ScreenCapture") {}
ScreenCapture::~ScreenCapture() = default;

StatusDisplay::StatusDisplay() : Object("StatusDisplay") {}
StatusDisplay::~StatusDisplay() = default;

Video::Video() : Object("Video") {}
Video::~Video() = default;

HardwareInfo::HardwareInfo() : Object("HardwareInfo") {}
HardwareInfo::~HardwareInfo() = default;

Signer::Signer() : Object("Signer") {}
Signer::~Signer() = default;

CredentialsState::CredentialsState() : Object("CredentialsState") {}
CredentialsState::~CredentialsState() = default;

VodState::VodState() : Object("VodState") {}
VodState::~VodState() = default;

SatelliteAntennaParams::SatelliteAntennaParams()
    : satCables(ANTENNA_SAT_CABLES_ONE),
      installationType(ANTENNA_INSTALLATION_SINGLE),
      repeatRate(0),
      ctrlVoltage(ANTENNA_CTRL_VOLTAGE_OFF),
      communalSupply(ANTENNA_COMMUNAL_SUPPLY_OFF),
      signal22kHz(ANTENNA_22KHZ_OFF),
      toneBurst(ANTENNA_TONE_BURST_OFF),
      motorType(0),
      motorMoveType(0),
      motorMoveData(0),
      motorPositionData(0),
      diseqcMode(ANTENNA_DISEQC_1_0),
      highBand(ANTENNA_HIGH_BAND_NO),
      unicableDevId(0),
      switchDelay(0) {}

SatelliteAntennaParams::~SatelliteAntennaParams() = default;

TerrestrialAntennaParams::TerrestrialAntennaParams() : supplyVoltage(ANTENNA_SUPPLY_VOLTAGE_OFF) {}
TerrestrialAntennaParams::~TerrestrialAntennaParams() = default;

}  // namespace port
}  // namespace zo
