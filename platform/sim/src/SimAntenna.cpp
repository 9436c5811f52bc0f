#include "SimAntenna.h"

#include <algorithm>
#include <cstring>

namespace sim {

SimAntenna::SimAntenna(SimSet& set)
    : SimObject(set, "Antenna",
                {{"getSatelliteParams", Kind::Int, {Kind::Satellite}},
                 {"setSatelliteParams", Kind::Int, {}},
                 {"getTerrestrialParams", Kind::Int, {Kind::Terrestrial}},
                 {"setTerrestrialParams", Kind::Int, {}},
                 {"setLnbPower", Kind::Int, {}}},
                {{"satellite", Kind::Satellite, defaultSatellite()},
                 {"terrestrial", Kind::Terrestrial, json{{"supplyVoltage", 0}}},
                 {"lnbPower", Kind::Int, 0}}) {}

int SimAntenna::getSatelliteParams(zo::port::SatelliteAntennaParams& params) {
    Call call(*this, "getSatelliteParams");
    const json own = state("satellite");
    const json filled = call.output(own);
    filled.get_to(params);
    return call.result(0);
}

int SimAntenna::setSatelliteParams(const zo::port::SatelliteAntennaParams& params) {
    const json record = params;
    Call call(*this, "setSatelliteParams", {record});
    const int status = call.result(0);
    if (status == 0) {
        state("satellite") = record;
    }
    return status;
}

int SimAntenna::getTerrestrialParams(zo::port::TerrestrialAntennaParams& params) {
    Call call(*this, "getTerrestrialParams");
    const json filled = call.output(state("terrestrial"));
    filled.get_to(params);
    return call.result(0);
}

int SimAntenna::setTerrestrialParams(const zo::port::TerrestrialAntennaParams& params) {
    const json record = params;
    Call call(*this, "setTerrestrialParams", {record});
    const int status = call.result(0);
    if (status == 0) {
        state("terrestrial") = record;
    }
    return status;
}

int SimAntenna::setLnbPower(int value) {
    Call call(*this, "setLnbPower", {value});
    const int status = call.result(0);
    if (status == 0) {
        state("lnbPower") = value;
    }
    return status;
}

json SimAntenna::defaultSatellite() {
    zo::port::SatelliteAntennaParams params;
    params.satId = {1};
    params.lnbFrequencyLow = {9750};
    params.lnbFrequencyHigh = {10600};
    params.ctrlVoltage = zo::port::ANTENNA_CTRL_VOLTAGE_ON;
    params.signal22kHz = zo::port::ANTENNA_22KHZ_BAND;
    return params;
}

}  // namespace sim
