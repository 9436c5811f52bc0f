#include "FuzzService.h"

#include <stdlib.h>

#include <cstdio>
#include <filesystem>

#include "FuzzRoot.h"
#include "zo/FileSystem.h"
#include "zo/host/Host.h"

namespace sysctrlfuzz {

FuzzService& FuzzService::instance() {
    static FuzzService* service = new FuzzService;
    return *service;
}

FuzzService::FuzzService() {
    m_root = makeFuzzRoot("sysctrl-fuzz");
    if (m_root.empty()) {
        std::perror("mkdtemp");
        abort();
    }
    std::filesystem::create_directories(m_root + "/var/tvservice");
    std::filesystem::create_directories(m_root + "/quentadata/model/config");
    zo::host::setFileSystemRoot(m_root);
    zo::host::setDebugSink([](uint32_t, const std::string&) {});
    m_sim.reset(new sim::SimSet);
    // No target reads the journal: keeping none saves a copy of every call.
    m_sim->setJournalLimit(0);
    m_client.reset(new sim::RecordingClient("fuzz"));
    create();
}

void FuzzService::create() {
    m_applications = CreateSysctrlserviceApplication();
    m_application = dynamic_cast<sysctrlservice::Application*>(m_applications[0]);
    if (m_application == nullptr || m_application->setupDone() != 0 ||
        m_application->start() != 0 || m_application->addClient(m_client) != 0) {
        std::fputs("fuzz: the service did not start\n", stderr);
        abort();
    }
}

void FuzzService::destroy() {
    zo::host::waitForThreads();
    delete m_application;
    delete[] m_applications;
    m_application = nullptr;
    m_applications = nullptr;
}

void FuzzService::reset() {
    zo::host::waitForThreads();
    sim::SimObject* const events = m_sim->find("EventManager");
    for (sim::SimObject* object : m_sim->objects()) {
        // The event manager's registrations are the running application's observers.
        if (object != events) {
            object->reset();
        }
    }
    m_sim->clearJournal();
    m_client->clear();
}

void FuzzService::restart() {
    destroy();
    // The old application's observers go with it; else each restart would add two for good.
    m_sim->find("EventManager")->reset();
    create();
    m_sim->clearJournal();
    m_client->clear();
}

void FuzzService::expectAnswers(const std::vector<int>& answered) const {
    const std::vector<sim::RecordingClient::Received> received = m_client->received();
    bool right = received.size() == answered.size();
    for (size_t n = 0; right && n < received.size(); ++n) {
        const frame::MsgIds ids = msgIds(answered[n]);
        const frame::TransportInfo from = transport(answered[n]);
        right =
            received[n].msgIds == std::vector<int32_t>(std::begin(ids.word), std::end(ids.word)) &&
            received[n].transport ==
                std::vector<int32_t>(std::begin(from.word), std::end(from.word));
    }
    if (!right) {
        std::fprintf(stderr, "fuzz: %zu callbacks for %zu answered calls, or identifiers changed\n",
                     received.size(), answered.size());
        abort();
    }
}

void FuzzService::expectAnswers(int count) const {
    std::vector<int> all;
    for (int k = 1; k <= count; ++k) {
        all.push_back(k);
    }
    expectAnswers(all);
}

void FuzzService::setState(const std::string& objectKey, const sim::json& value) {
    std::string error;
    if (!m_sim->setState(objectKey, value, error)) {
        std::fprintf(stderr, "fuzz: %s\n", error.c_str());
        abort();
    }
}

void FuzzService::setAnswer(const std::string& objectOperation, const sim::json& result,
                            const sim::json& outputs) {
    std::string error;
    if (!m_sim->setAnswer(objectOperation, result, outputs, error)) {
        std::fprintf(stderr, "fuzz: %s\n", error.c_str());
        abort();
    }
}

int FuzzService::runCalls(const uint8_t* data, size_t size, const CallMaker& makeCall) {
    FuzzService& fuzz = instance();
    fuzz.reset();
    FuzzInput input(data, size);
    std::vector<int> answered;
    int k = 0;
    do {
        ++k;
        FuzzCall call{input, fuzz, fuzz.service(), msgIds(k), transport(k)};
        if (makeCall(call)) {
            answered.push_back(k);
        }
    } while (!input.empty());
    fuzz.expectAnswers(answered);
    return 0;
}

std::string FuzzService::rootPath(const std::string& systemPath) {
    return zo::fs::path(systemPath);
}

}  // namespace sysctrlfuzz
