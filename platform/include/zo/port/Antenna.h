#ifndef ZO_PORT_ANTENNA_H
#define ZO_PORT_ANTENNA_H

#include <cstdint>
#include <string>
#include <vector>

#include "zo/port/Object.h"

namespace zo {
namespace port {

enum antennaSatCables_enum : int32_t {
    ANTENNA_SAT_CABLES_ONE = 0,
    ANTENNA_SAT_CABLES_TWO = 1,
    ANTENNA_SAT_CABLES_SPLIT = 2,
};

enum antennaInstallationType_enum : int32_t {
    ANTENNA_INSTALLATION_SINGLE = 0,
    ANTENNA_INSTALLATION_SWITCHBOX = 1,
    ANTENNA_INSTALLATION_TONEBURST = 2,
    ANTENNA_INSTALLATION_DISEQC = 3,
    ANTENNA_INSTALLATION_DISEQC_ONECABLE = 4,
    ANTENNA_INSTALLATION_RESERVED = 5,
    ANTENNA_INSTALLATION_COMMUNAL = 6,
};

enum antennaCtrlVoltage_enum : int32_t {
    ANTENNA_CTRL_VOLTAGE_OFF = 0,
    ANTENNA_CTRL_VOLTAGE_ON = 1,
};

enum antennaCommunalSupply_enum : int32_t {
    ANTENNA_COMMUNAL_SUPPLY_OFF = 0,
    ANTENNA_COMMUNAL_SUPPLY_13V = 1,
    ANTENNA_COMMUNAL_SUPPLY_18V = 2,
};

enum antenna22kHzSignal_enum : int32_t {
    ANTENNA_22KHZ_OFF = 0,
    ANTENNA_22KHZ_BAND = 1,
    ANTENNA_22KHZ_POSITION = 2,
};

enum antennaToneBurst_enum : int32_t {
    ANTENNA_TONE_BURST_OFF = 0,
    ANTENNA_TONE_BURST_POSITION = 1,
    ANTENNA_TONE_BURST_OPTION = 2,
};

enum antennaDiseqcMode_enum : int32_t {
    ANTENNA_DISEQC_1_0 = 0,
    ANTENNA_DISEQC_1_2 = 1,
};

enum antennaHighBand_enum : int32_t {
    ANTENNA_HIGH_BAND_NO = 0,
    ANTENNA_HIGH_BAND_YES = 1,
};

enum antennaPinProtected_enum : int32_t {
    ANTENNA_PIN_NOT_PROTECTED = 0,
    ANTENNA_PIN_PROTECTED = 1,
};

enum antennaSupplyVoltage_enum : int32_t {
    ANTENNA_SUPPLY_VOLTAGE_OFF = 0,
    ANTENNA_SUPPLY_VOLTAGE_5V = 1,
};

// The satellite dish installation. Lists hold one entry per satellite, channel or PIN.
struct SatelliteAntennaParams {
    SatelliteAntennaParams();
    ~SatelliteAntennaParams();

    antennaSatCables_enum satCables;
    antennaInstallationType_enum installationType;
    std::vector<int32_t> satId;
    std::vector<uint32_t> lnbFrequencyLow;
    std::vector<uint32_t> lnbFrequencyHigh;
    uint32_t repeatRate;
    antennaCtrlVoltage_enum ctrlVoltage;
    antennaCommunalSupply_enum communalSupply;
    antenna22kHzSignal_enum signal22kHz;
    antennaToneBurst_enum toneBurst;
    int32_t motorType;
    int32_t motorMoveType;
    int32_t motorMoveData;
    int32_t motorPositionData;
    antennaDiseqcMode_enum diseqcMode;
    antennaHighBand_enum highBand;
    int32_t unicableDevId;
    uint32_t switchDelay;
    std::vector<uint32_t> channelNumber;
    std::vector<uint32_t> channelFrequency;
    std::vector<std::string> pin;
    std::vector<antennaPinProtected_enum> pinProtected;
};

// The terrestrial antenna's supply.
struct TerrestrialAntennaParams {
    TerrestrialAntennaParams();
    ~TerrestrialAntennaParams();

    antennaSupplyVoltage_enum supplyVoltage;
};

// Antenna settings of the tuners. Every operation returns 0 on success.
class Antenna : public Object {
  public:
    Antenna();
    ~Antenna() override;

    virtual int getSatelliteParams(SatelliteAntennaParams& params) = 0;
    virtual int setSatelliteParams(const SatelliteAntennaParams& params) = 0;
    virtual int getTerrestrialParams(TerrestrialAntennaParams& params) = 0;
    virtual int setTerrestrialParams(const TerrestrialAntennaParams& params) = 0;
    virtual int setLnbPower(int value) = 0;
};

}  // namespace port
}  // namespace zo

#endif
