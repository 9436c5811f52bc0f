#ifndef SIM_SIMFACTORYMANAGER_H
#define SIM_SIMFACTORYMANAGER_H

#include "sim/SimSet.h"
#include "zo/port/FactoryManager.h"

namespace sim {

class SimFactoryManager : public zo::port::FactoryManager, public SimObject {
  public:
    explicit SimFactoryManager(SimSet& set);

    int setGpio(const std::string& command, std::string& result) override;
    int getGpio(const std::string& command, std::string& result) override;
    int commandIic(std::string command, std::string& result) override;
    int controlHdmi(const std::string& command, std::string& result) override;
    // Burnt items are added to the fuses, replacing items of the same name.
    bool burnSecureFuses(const std::vector<zo::port::secfuseitem>& items) override;
    bool getSecureFuses(std::vector<zo::port::secfuseitem>& items, unsigned int selector) override;
    bool deleteCredentials(int mode) override;
    bool rewriteCredentials(int mode) override;
    // EAROM data crosses as hex text.
    bool readEaromBlock(int offset, unsigned int length, std::string& data) override;
    bool writeEaromBlock(int offset, const std::string& data, std::string& result) override;
    bool queryEaromSize(std::string& size) override;

  private:
    // The diagnostic commands' syntax is the platform's: the simulated manager accepts every
    // command and fills an empty result unless a script says otherwise.
    int textCommand(const char* operation, const std::string& command, std::string& result);
    bool credentials(const char* operation, int mode, const char* after);
};

}  // namespace sim

#endif
