#include "ServiceTest.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "TempFolder.h"
#include "zo/FileSystem.h"
#include "zo/host/Host.h"

namespace sysctrltest {

void ServiceTest::SetUp() {
    m_root = makeTemporaryFolder("test");
    ASSERT_FALSE(m_root.empty());
    std::filesystem::create_directories(m_root + "/var/tvservice");
    std::filesystem::create_directories(m_root + "/quentadata/model/config");
    zo::host::setFileSystemRoot(m_root);
    zo::host::resetFrameStepResults();
    zo::host::setDebugSink([this](uint32_t levelWord, const std::string& text) {
        std::lock_guard<std::mutex> lock(m_logMutex);
        m_logs.push_back(LogLine{static_cast<uint16_t>(levelWord >> 16),
                                 static_cast<uint16_t>(levelWord & 0xFFFF), text});
    });
    m_sim.reset(new sim::SimSet);
    recreateService();
}

void ServiceTest::TearDown() {
    destroyService();
    m_sim.reset();
    zo::host::setDebugSink(nullptr);
    zo::host::resetFrameStepResults();
    zo::host::setFileSystemRoot("");
    std::error_code ignored;
    std::filesystem::remove_all(m_root, ignored);
}

void ServiceTest::startService() {
    ASSERT_EQ(m_application->setupDone(), 0);
    ASSERT_EQ(m_application->start(), 0);
}

boost::shared_ptr<sim::RecordingClient> ServiceTest::startWithClient(const std::string& name) {
    startService();
    boost::shared_ptr<sim::RecordingClient> client = addClient(name);
    quiet();
    return client;
}

void ServiceTest::quiet() {
    m_sim->clearJournal();
    clearLogs();
}

void ServiceTest::destroyService() {
    zo::host::waitForThreads();
    delete m_application;
    delete[] m_applications;
    m_application = nullptr;
    m_applications = nullptr;
}

void ServiceTest::recreateService() {
    destroyService();
    m_applications = CreateSysctrlserviceApplication();
    ASSERT_NE(m_applications, nullptr);
    m_application = dynamic_cast<sysctrlservice::Application*>(m_applications[0]);
    ASSERT_NE(m_application, nullptr);
}

boost::shared_ptr<sim::RecordingClient> ServiceTest::addClient(const std::string& name) {
    boost::shared_ptr<sim::RecordingClient> client(new sim::RecordingClient(name, m_sim.get()));
    EXPECT_EQ(service().addClient(client), 0);
    return client;
}

std::vector<LogLine> ServiceTest::logs() const {
    std::lock_guard<std::mutex> lock(m_logMutex);
    return m_logs;
}

std::vector<std::string> ServiceTest::logsContaining(const std::string& fragment) const {
    std::vector<std::string> found;
    for (const LogLine& line : logs()) {
        if (line.text.find(fragment) != std::string::npos) {
            found.push_back(line.text);
        }
    }
    return found;
}

std::vector<std::pair<uint16_t, std::string>> ServiceTest::messages() const {
    std::vector<std::pair<uint16_t, std::string>> found;
    for (const LogLine& line : logs()) {
        const size_t end = line.text.find("(): ");
        found.emplace_back(line.level,
                           end == std::string::npos ? line.text : line.text.substr(end + 4));
    }
    return found;
}

void ServiceTest::clearLogs() {
    std::lock_guard<std::mutex> lock(m_logMutex);
    m_logs.clear();
}

void ServiceTest::setAnswer(const std::string& objectOperation, const sim::json& result,
                            const sim::json& outputs) {
    std::string error;
    ASSERT_TRUE(m_sim->setAnswer(objectOperation, result, outputs, error)) << error;
}

void ServiceTest::setThrow(const std::string& objectOperation, const std::string& what) {
    std::string error;
    ASSERT_TRUE(m_sim->setThrow(objectOperation, what, error)) << error;
}

void ServiceTest::clearAnswer(const std::string& objectOperation) {
    std::string error;
    ASSERT_TRUE(m_sim->clearAnswer(objectOperation, error)) << error;
}

void ServiceTest::setState(const std::string& objectKey, const sim::json& value) {
    std::string error;
    ASSERT_TRUE(m_sim->setState(objectKey, value, error)) << error;
}

void ServiceTest::setAbsent(const std::string& object) {
    std::string error;
    ASSERT_TRUE(m_sim->setPresent(object, false, error)) << error;
}

std::string ServiceTest::rootPath(const std::string& systemPath) const {
    return zo::fs::path(systemPath);
}

void ServiceTest::writeFile(const std::string& systemPath, const std::string& content) const {
    const std::string path = rootPath(systemPath);
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

std::string ServiceTest::readFile(const std::string& systemPath) const {
    std::ifstream in(rootPath(systemPath), std::ios::binary);
    if (!in) {
        return "<missing>";
    }
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

}  // namespace sysctrltest
