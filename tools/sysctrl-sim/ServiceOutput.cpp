#include "ServiceOutput.h"

#include <fcntl.h>
#include <unistd.h>

namespace desk {
namespace {

// Room for what a service prints between two script lines; it never blocks on less.
const int kPipeSize = 1 << 20;

}  // namespace

ServiceOutput::ServiceOutput(Printer& printer) : m_printer(printer) {
    std::fflush(stdout);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return;
    }
    fcntl(ends[1], F_SETPIPE_SZ, kPipeSize);
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    m_original = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    m_out = m_original >= 0 ? fdopen(m_original, "w") : nullptr;
    if (m_out == nullptr || dup2(ends[1], STDOUT_FILENO) < 0) {
        if (m_out != nullptr) {
            std::fclose(m_out);
        } else if (m_original >= 0) {
            close(m_original);
        }
        m_out = nullptr;
        close(ends[0]);
        close(ends[1]);
        return;
    }
    close(ends[1]);
    m_pipe = ends[0];
    // Each line the service writes reaches the pipe at once, so that a host waiting for the pipe
    // (serving D-Bus between script lines) sees it.
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    m_printer.setOutput(m_out);
}

ServiceOutput::~ServiceOutput() {
    if (!active()) {
        return;
    }
    drain(true);
    std::fflush(stdout);
    dup2(m_original, STDOUT_FILENO);
    m_printer.setOutput(stdout);
    std::fclose(m_out);
    close(m_pipe);
}

void ServiceOutput::drain(bool all) {
    if (!active()) {
        return;
    }
    std::fflush(stdout);
    char buffer[4096];
    ssize_t count;
    while ((count = read(m_pipe, buffer, sizeof buffer)) > 0) {
        m_pending.append(buffer, static_cast<size_t>(count));
    }
    size_t start = 0;
    for (size_t end; (end = m_pending.find('\n', start)) != std::string::npos; start = end + 1) {
        m_printer.print({{"event", "stdout"}, {"text", m_pending.substr(start, end - start)}});
    }
    m_pending.erase(0, start);
    if (all && !m_pending.empty()) {
        m_printer.print({{"event", "stdout"}, {"text", m_pending}});
        m_pending.clear();
    }
}

}  // namespace desk
