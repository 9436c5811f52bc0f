#ifndef SYSCTRL_SIM_PRINTER_H
#define SYSCTRL_SIM_PRINTER_H

#include <cstdio>
#include <mutex>
#include <set>
#include <string>

#include <nlohmann/json.hpp>

namespace desk {

// Writes the events of a run to standard output, one line each, as JSON or for a person to read.
// Safe to call from any thread; lines never interleave.
class Printer {
  public:
    // `only` lists the event kinds to print; empty prints all.
    Printer(bool json, std::set<std::string> only);

    void print(const nlohmann::json& event);
    // Whether events of this kind are printed: one that is not need not be made.
    bool prints(const std::string& kind) const;
    // Where the lines go; standard output by default.
    void setOutput(FILE* out);

    // The line a person reads for an event.
    static std::string readable(const nlohmann::json& event);

  private:
    bool m_json;
    std::set<std::string> m_only;
    std::mutex m_mutex;
    FILE* m_out = stdout;
};

}  // namespace desk

#endif
