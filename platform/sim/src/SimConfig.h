#ifndef SIM_SIMCONFIG_H
#define SIM_SIMCONFIG_H

#include "sim/SimSet.h"

namespace sim {

class SimConfig : public SimObject {
  public:
    explicit SimConfig(SimSet& set);

    // Reads the INI file under the file-system root.
    int readInt(const std::string& file, const std::string& section, const std::string& key,
                int& value);
};

}  // namespace sim

#endif
