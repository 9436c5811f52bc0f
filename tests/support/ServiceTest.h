#ifndef TESTS_SERVICETEST_H
#define TESTS_SERVICETEST_H

#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "Application.h"
#include "RecordingClient.h"
#include "sim/SimSet.h"

namespace sysctrltest {

// One message of the debug channel.
struct LogLine {
    uint16_t module;
    uint16_t level;
    std::string text;
};

// A fresh simulated set, file-system root and log capture per test, and an application created
// through the plug-in's entry, as the framework would.
class ServiceTest : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    // Runs setupDone and start, expecting both to succeed.
    void startService();
    // Starts the service, registers one client and clears the journal and logs of all that, so a
    // test sees only what its own calls cause.
    boost::shared_ptr<sim::RecordingClient> startWithClient(const std::string& name);
    // Waits for the service's threads, then deletes the application.
    void destroyService();
    // Deletes the application and creates a new one through the plug-in's entry, as a restarted
    // process would; the simulated set and the files stay.
    void recreateService();

    sysctrlservice::Application& app() { return *m_application; }
    sysctrlservice::ServiceInterface& service() { return *m_application; }
    sim::SimSet& sim() { return *m_sim; }

    // A client registered with the service.
    boost::shared_ptr<sim::RecordingClient> addClient(const std::string& name);

    // Identifiers of the k-th request of a test.
    static frame::MsgIds msgIds(int k) { return frame::MsgIds{{k, 0}}; }
    static frame::TransportInfo transport(int k) {
        return frame::TransportInfo{{k, 0, 0, 0, 0, 0, 0}};
    }

    std::vector<LogLine> logs() const;
    // The texts of the messages that contain `fragment`.
    std::vector<std::string> logsContaining(const std::string& fragment) const;
    // The message texts with the "file:line:function(): " prefix cut off, with their levels.
    std::vector<std::pair<uint16_t, std::string>> messages() const;
    void clearLogs();
    // Clears the journal and the logs.
    void quiet();

    // Scripts a port operation, failing the test on a bad script.
    void setAnswer(const std::string& objectOperation, const sim::json& result,
                   const sim::json& outputs = sim::json::array());
    // Makes a port operation throw std::runtime_error(`what`) until the answer is cleared.
    void setThrow(const std::string& objectOperation, const std::string& what);
    void clearAnswer(const std::string& objectOperation);
    void setState(const std::string& objectKey, const sim::json& value);
    void setAbsent(const std::string& object);

    // A path under the test's file-system root, for one of the system's fixed paths.
    std::string rootPath(const std::string& systemPath) const;
    void writeFile(const std::string& systemPath, const std::string& content) const;
    // The whole file, or "<missing>".
    std::string readFile(const std::string& systemPath) const;

    std::string m_root;

  private:
    std::unique_ptr<sim::SimSet> m_sim;
    frame::AbstractApplication** m_applications = nullptr;
    sysctrlservice::Application* m_application = nullptr;
    mutable std::mutex m_logMutex;
    std::vector<LogLine> m_logs;
};

// The same with the service set up and started, and the journal and logs of its start cleared.
class StartedServiceTest : public ServiceTest {
  protected:
    void SetUp() override {
        ServiceTest::SetUp();
        startService();
        quiet();
    }
};

}  // namespace sysctrltest

#endif
