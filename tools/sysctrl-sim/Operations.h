#ifndef SYSCTRL_SIM_OPERATIONS_H
#define SYSCTRL_SIM_OPERATIONS_H

#include <functional>
#include <string>
#include <vector>

#include "Arguments.h"
#include "ServiceInterface.h"

namespace desk {

// One interface operation as scripts call it: its arguments after MsgIds and TransportInfo, read
// from the command's words in the interface's order.
struct Operation {
    const char* name;
    // The arguments as words, e.g. "OFFSET LENGTH".
    std::string usage;
    const char* summary;
    // Reads the arguments; when all are valid, calls the operation and sets `status`. Returns false
    // when an argument is bad (the reason is in `args`).
    std::function<bool(sysctrlservice::ServiceInterface& service, frame::MsgIds& msgIds,
                       const frame::TransportInfo& transport, Arguments& args, int& status)>
        invoke;
};

// The operations that carry MsgIds and TransportInfo, in the interface's order.
const std::vector<Operation>& operations();
const Operation* findOperation(const std::string& name);

}  // namespace desk

#endif
