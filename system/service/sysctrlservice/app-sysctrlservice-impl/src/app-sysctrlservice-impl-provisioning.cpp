// Secure fuses, credentials, EAROM, chip identity and message signing.
#include "Application.h"

namespace sysctrlservice {

int Application::requestFuseInfo(frame::MsgIds&, const frame::TransportInfo&, unsigned int) { return 0; }

int Application::burnFuses(frame::MsgIds&, const frame::TransportInfo&, const std::vector<fuseitemcontent1_t>&) { return 0; }

int Application::reinitCredentials(frame::MsgIds&, const frame::TransportInfo&, int) { return 0; }

int Application::readEarom(frame::MsgIds&, const frame::TransportInfo&, int, unsigned int) { return 0; }

int Application::writeEarom(frame::MsgIds&, const frame::TransportInfo&, int, const std::string&) { return 0; }

int Application::getEaromSize(frame::MsgIds&, const frame::TransportInfo&) { return 0; }

int Application::getChipID(frame::MsgIds&, const frame::TransportInfo&) { return 0; }

int Application::getYTSignature(frame::MsgIds&, const frame::TransportInfo&, const std::string&, unsigned int, unsigned int) { return -1; }

}  // namespace sysctrlservice
