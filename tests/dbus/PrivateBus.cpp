#include "PrivateBus.h"

#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "../support/TempFolder.h"

namespace sysctrltest {

PrivateBus::PrivateBus() {
    m_directory = makeTemporaryFolder("bus");
    if (m_directory.empty()) {
        return;
    }
    const std::string config = m_directory + "/bus.conf";
    std::ofstream(config) << "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus "
                             "Configuration 1.0//EN\"\n"
                             " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
                             "<busconfig>\n"
                             "  <type>session</type>\n"
                             "  <listen>unix:dir="
                          << m_directory
                          << "</listen>\n"
                             "  <auth>EXTERNAL</auth>\n"
                             "  <policy context=\"default\">\n"
                             "    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
                             "    <allow eavesdrop=\"true\"/>\n"
                             "    <allow own=\"*\"/>\n"
                             "  </policy>\n"
                             "</busconfig>\n";
    // The daemon stays our child (no fork), so that stopping it can wait for it.
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0) {
        return;
    }
    const std::string printAddress = "--print-address=" + std::to_string(pipeEnds[1]);
    const pid_t child = fork();
    if (child == 0) {
        // A test that crashes takes its bus with it.
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        close(pipeEnds[0]);
        execlp("dbus-daemon", "dbus-daemon", ("--config-file=" + config).c_str(), "--nofork",
               printAddress.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    close(pipeEnds[1]);
    if (child < 0) {
        close(pipeEnds[0]);
        return;
    }
    m_pid = child;
    FILE* output = fdopen(pipeEnds[0], "r");
    char line[512];
    if (output != nullptr && std::fgets(line, sizeof line, output) != nullptr) {
        m_address = line;
        m_address.erase(m_address.find_last_not_of("\n") + 1);
    }
    if (output != nullptr) {
        std::fclose(output);
    }
}

PrivateBus::~PrivateBus() {
    stop();
    std::error_code ignored;
    if (!m_directory.empty()) {
        std::filesystem::remove_all(m_directory, ignored);
    }
}

void PrivateBus::stop() {
    if (m_pid <= 0) {
        return;
    }
    kill(m_pid, SIGTERM);
    waitpid(m_pid, nullptr, 0);
    m_pid = -1;
}

}  // namespace sysctrltest
