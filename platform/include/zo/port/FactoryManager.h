#ifndef ZO_PORT_FACTORYMANAGER_H
#define ZO_PORT_FACTORYMANAGER_H

#include <cstdint>
#include <string>
#include <vector>

#include "zo/port/Object.h"

namespace zo {
namespace port {

// One secure fuse item.
struct secfuseitem {
    std::string name;
    std::string value;
};

// Factory functions: GPIO, I2C and HDMI diagnostic commands, secure fuses, credentials, EAROM.
class FactoryManager : public Object {
  public:
    FactoryManager();
    ~FactoryManager() override;

    // Diagnostic text commands: fill `result`, return non-zero when done and 0 on failure.
    virtual int setGpio(const std::string& command, std::string& result) = 0;
    virtual int getGpio(const std::string& command, std::string& result) = 0;
    virtual int commandIic(std::string command, std::string& result) = 0;
    virtual int controlHdmi(const std::string& command, std::string& result) = 0;

    // The rest return true on success.
    virtual bool burnSecureFuses(const std::vector<secfuseitem>& items) = 0;
    virtual bool getSecureFuses(std::vector<secfuseitem>& items, unsigned int selector) = 0;
    virtual bool deleteCredentials(int mode) = 0;
    virtual bool rewriteCredentials(int mode) = 0;
    virtual bool readEaromBlock(int offset, unsigned int length, std::string& data) = 0;
    virtual bool writeEaromBlock(int offset, const std::string& data, std::string& result) = 0;
    virtual bool queryEaromSize(std::string& size) = 0;
};

}  // namespace port
}  // namespace zo

#endif
