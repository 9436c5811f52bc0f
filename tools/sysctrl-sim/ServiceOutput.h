#ifndef SYSCTRL_SIM_SERVICEOUTPUT_H
#define SYSCTRL_SIM_SERVICEOUTPUT_H

#include <cstdio>
#include <string>

#include "Printer.h"

namespace desk {

// Keeps the desk host's own output apart from what the plug-in prints: while it lives, the
// process's standard output is a pipe, the printer writes to the original standard output, and
// each line written to the pipe reaches the printer as {"event":"stdout","text":LINE}. The pipe is
// read when drain() is called, so the lines come in a fixed place: after the script line that
// printed them.
class ServiceOutput {
  public:
    explicit ServiceOutput(Printer& printer);
    ~ServiceOutput();

    ServiceOutput(const ServiceOutput&) = delete;
    ServiceOutput& operator=(const ServiceOutput&) = delete;

    // False when standard output could not be taken over; the run then goes on without it.
    bool active() const { return m_pipe >= 0; }
    // The pipe's reading end, readable when the service has written; -1 when not active. A host
    // that waits for something else polls it too, so the service never blocks on a full pipe.
    int descriptor() const { return m_pipe; }
    // Flushes standard output and prints every whole line written so far; `all` prints an
    // unfinished last line too.
    void drain(bool all = false);

  private:
    Printer& m_printer;
    int m_original = -1;
    int m_pipe = -1;
    FILE* m_out = nullptr;
    std::string m_pending;
};

}  // namespace desk

#endif
