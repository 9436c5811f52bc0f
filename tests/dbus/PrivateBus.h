#ifndef TESTS_DBUS_PRIVATEBUS_H
#define TESTS_DBUS_PRIVATEBUS_H

#include <string>

namespace sysctrltest {

// A message bus of its own for one test or benchmark: a dbus-daemon in a fresh temporary
// directory, with a configuration that lets every local caller own names and call. Never the
// machine's bus.
class PrivateBus {
  public:
    PrivateBus();
    ~PrivateBus();

    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    // Empty when the daemon did not start.
    const std::string& address() const { return m_address; }
    // Ends the daemon and waits until it is gone.
    void stop();

  private:
    std::string m_directory;
    std::string m_address;
    int m_pid = -1;
};

}  // namespace sysctrltest

#endif
