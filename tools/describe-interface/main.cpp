// Writes what is derived from the remote interface's description: the bridge's introspection XML,
// its system-bus policy and the Markdown tables of the docs.
//   sysctrl-describe-interface xml|policy|operations|dbus-methods|dbus-signals [FILE]
#include <algorithm>
#include <fstream>
#include <iostream>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "DbusCalls.h"
#include "ServiceDescription.h"

namespace {

using namespace sysctrlservice;
using namespace sysctrlservice::dbus;

const char* accessName(Access access) {
    switch (access) {
        case Access::read:
            return "read";
        case Access::tune:
            return "tune";
        case Access::control:
            return "control";
        case Access::factory:
            return "factory";
    }
    return "factory";
}

// A signal reaches only the factory when it carries the result of a factory operation.
Access signalAccess(const SignalSpec& signal) {
    for (const OperationInfo& operation : operationInfos()) {
        if (operation.result == signal.callback && operation.access == Access::factory) {
            return Access::factory;
        }
    }
    return Access::read;
}

// The methods and signals in the order introspection lists them: by name.
template <typename Spec>
std::vector<const Spec*> byName(const std::vector<Spec>& specs) {
    std::vector<const Spec*> sorted;
    for (const Spec& spec : specs) {
        sorted.push_back(&spec);
    }
    std::sort(sorted.begin(), sorted.end(),
              [](const Spec* a, const Spec* b) { return a->name < b->name; });
    return sorted;
}

// The signature's complete types, one per argument.
std::vector<std::string> splitSignature(const std::string& signature) {
    std::vector<std::string> types;
    std::string current;
    int depth = 0;
    for (char c : signature) {
        current += c;
        depth += (c == '(' || c == '{') ? 1 : (c == ')' || c == '}') ? -1 : 0;
        if (depth == 0 && c != 'a') {
            types.push_back(current);
            current.clear();
        }
    }
    return types;
}

std::string xmlArguments(const std::vector<std::string>& names, const std::string& signature,
                         const char* direction) {
    const std::vector<std::string> types = splitSignature(signature);
    std::string text;
    for (size_t i = 0; i < names.size() && i < types.size(); ++i) {
        text += "   <arg name=\"" + names[i] + "\" type=\"" + types[i] + "\"";
        text += direction == nullptr ? "/>\n" : std::string(" direction=\"") + direction + "\"/>\n";
    }
    return text;
}

std::string accessAnnotation(Access access) {
    return std::string("   <annotation name=\"") + kInterface + ".Access\" value=\"" +
           accessName(access) + "\"/>\n";
}

const char kXmlHead[] =
    "<!DOCTYPE node PUBLIC \"-//freedesktop//DTD D-BUS Object Introspection 1.0//EN\"\n"
    " \"http://www.freedesktop.org/standards/dbus/1.0/introspect.dtd\">\n"
    "<!-- The system-control service on D-Bus: bus name zorbel.lm.sysctrlservice, object\n"
    "     /zorbel/lm/sysctrlservice. Each method runs the operation of the same name (first "
    "letter in\n"
    "     lower case) and replies with its status and, when the operation delivers one, its "
    "result.\n"
    "     Each signal is a callback of the service, with the call's identifiers first; reports "
    "that no\n"
    "     call asked for carry the identifiers (-1,-1). The access annotation is what the "
    "system-bus\n"
    "     policy zorbel.lm.sysctrlservice.conf allows: \"read\" and \"tune\" also the service "
    "group, \"control\"\n"
    "     and \"factory\" only root and the factory group. docs/dbus.md describes the interface.\n"
    "     Generated from the interface's description (ServiceDescription.h). -->\n";

std::string xmlText() {
    std::string text = kXmlHead;
    text += std::string("<node>\n <interface name=\"") + kInterface + "\">\n";
    for (const MethodSpec* method : byName(methods())) {
        text += "  <method name=\"" + method->name + "\">\n";
        text += xmlArguments(method->inNames, method->inSignature, "in");
        text += xmlArguments(replyNames(*method), replySignature(*method), "out");
        text += accessAnnotation(method->operation->access) + "  </method>\n";
    }
    for (const SignalSpec* signal : byName(signals())) {
        text += "  <signal name=\"" + signal->name + "\">\n";
        text += xmlArguments(signalNames(*signal), signalSignature(*signal), nullptr);
        text += accessAnnotation(signalAccess(*signal)) + "  </signal>\n";
    }
    return text + " </interface>\n</node>\n";
}

const char kPolicyHead[] =
    "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-BUS Bus Configuration 1.0//EN\"\n"
    " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
    "<!-- Who may use the system-control service on the system bus. root and the group "
    "sysctrl-factory\n"
    "     may call every method; the group sysctrl-service may call the reading and tuning "
    "methods (the\n"
    "     methods whose access annotation in zorbel.lm.sysctrlservice2.xml is \"read\" or "
    "\"tune\"); nobody\n"
    "     else may call any. The factory and provisioning signals (fuses, credentials, EAROM "
    "writes,\n"
    "     signature, shell) reach only root and the factory group; the other signals also the "
    "service\n"
    "     group. Anyone may introspect. Generated from the interface's description\n"
    "     (ServiceDescription.h). -->\n";

std::string policyText() {
    const std::string name = kBusName;
    std::string text = kPolicyHead;
    text += "<busconfig>\n  <policy user=\"root\">\n    <allow own=\"" + name + "\"/>\n";
    text += "    <allow send_destination=\"" + name + "\"/>\n";
    text += "    <allow receive_sender=\"" + name + "\"/>\n  </policy>\n\n";
    text +=
        "  <policy group=\"sysctrl-factory\">\n    <allow send_destination=\"" + name + "\"/>\n";
    text += "    <allow receive_sender=\"" + name + "\"/>\n  </policy>\n\n";
    text += "  <policy group=\"sysctrl-service\">\n";
    for (const MethodSpec* method : byName(methods())) {
        const Access access = method->operation->access;
        if (access == Access::read || access == Access::tune) {
            text += "    <allow send_destination=\"" + name + "\" send_interface=\"" + kInterface +
                    "\"\n           send_member=\"" + method->name + "\"/>\n";
        }
    }
    text += "    <allow receive_sender=\"" + name + "\" receive_type=\"signal\"/>\n";
    for (const SignalSpec* signal : byName(signals())) {
        if (signalAccess(*signal) == Access::factory) {
            text += "    <deny receive_sender=\"" + name + "\" receive_interface=\"" + kInterface +
                    "\"\n          receive_member=\"" + signal->name + "\"/>\n";
        }
    }
    text += "  </policy>\n\n  <policy context=\"default\">\n";
    text += "    <deny send_destination=\"" + name + "\"/>\n";
    text += "    <allow send_destination=\"" + name +
            "\"\n           send_interface=\"org.freedesktop.DBus.Introspectable\"/>\n";
    text += "    <allow send_destination=\"" + name +
            "\" send_interface=\"org.freedesktop.DBus.Peer\"/>\n";
    text += "    <deny receive_sender=\"" + name + "\" receive_type=\"signal\"/>\n  </policy>\n";
    return text + "</busconfig>\n";
}

template <typename T>
const char* typeName() {
    if constexpr (std::is_same_v<T, int>) {
        return "int";
    } else if constexpr (std::is_same_v<T, unsigned int>) {
        return "uint";
    } else if constexpr (std::is_same_v<T, unsigned char>) {
        return "uchar";
    } else if constexpr (std::is_same_v<T, std::string>) {
        return "string";
    } else if constexpr (std::is_same_v<T, CaptureType_t>) {
        return "CaptureType_t";
    } else if constexpr (std::is_same_v<T, PowerMode_t>) {
        return "PowerMode_t";
    } else if constexpr (std::is_same_v<T, std::vector<int>>) {
        return "vector<int>";
    } else if constexpr (std::is_same_v<T, std::vector<fuseitemcontent1_t>>) {
        return "vector<fuseitemcontent1_t>";
    } else {
        static_assert(std::is_same_v<T, OptimeInfo>, "every value type has a name");
        return "OptimeInfo";
    }
}

std::string joined(const std::vector<std::string>& parts, const char* separator) {
    std::string text;
    for (const std::string& part : parts) {
        text += (text.empty() ? "" : separator) + part;
    }
    return text;
}

// "int offset, uint length": the C++ types and names of a member's arguments.
template <typename... Values>
std::string typedArguments(const std::vector<ArgumentInfo>& arguments,
                           const std::tuple<Values...>*) {
    std::vector<std::string> parts;
    size_t index = 0;
    (parts.push_back(std::string(typeName<Values>()) + " " + arguments[index++].name), ...);
    return joined(parts, ", ");
}

template <typename Member>
std::string typedArguments(const std::vector<ArgumentInfo>& arguments) {
    return typedArguments(
        arguments, static_cast<const typename description::Parameters<Member>::Tuple*>(nullptr));
}

std::string operationsTable() {
    std::vector<std::string> callbacks;
    forEachCallback([&callbacks](const CallbackInfo& callback, auto member) {
        callbacks.push_back(std::string("`") + callback.name + "(" +
                            typedArguments<typename decltype(member)::type>(callback.arguments) +
                            ")`");
    });
    std::string text =
        "| # | operation | arguments | result | access | summary |\n"
        "|---|---|---|---|---|---|\n";
    forEachOperation([&](const OperationInfo& operation, auto member) {
        const std::string arguments =
            typedArguments<typename decltype(member)::type>(operation.arguments);
        text +=
            "| " + std::to_string(static_cast<size_t>(operation.id) + 1) + " | `" + operation.name +
            "` | " + (arguments.empty() ? "none" : "`" + arguments + "`") + " | " +
            (operation.result == nullptr ? std::string("none")
                                         : callbacks[static_cast<size_t>(operation.result->id)]) +
            " | " + accessName(operation.access) + " | " + operation.summary + " |\n";
    });
    return text;
}

// "offset i, length u": the names and D-Bus types of arguments.
std::string busArguments(const std::vector<std::string>& names, const std::string& signature) {
    const std::vector<std::string> types = splitSignature(signature);
    std::vector<std::string> parts;
    for (size_t i = 0; i < names.size() && i < types.size(); ++i) {
        parts.push_back(names[i] + " `" + types[i] + "`");
    }
    return parts.empty() ? "none" : joined(parts, ", ");
}

std::string busMethodsTable() {
    std::string text =
        "| method | arguments | reply after the status | access |\n"
        "|---|---|---|---|\n";
    for (const MethodSpec& method : methods()) {
        text += "| `" + method.name + "` | " + busArguments(method.inNames, method.inSignature) +
                " | " +
                (method.result == nullptr
                     ? std::string("none")
                     : busArguments(method.result->argNames, method.result->signature) +
                           ", also as `" + method.result->name + "`") +
                " | " + accessName(method.operation->access) + " |\n";
    }
    return text;
}

std::string busSignalsTable() {
    std::string text = "| signal | arguments after msgIds `(ii)` | reaches |\n|---|---|---|\n";
    for (const SignalSpec& signal : signals()) {
        text += "| `" + signal.name + "` | " + busArguments(signal.argNames, signal.signature) +
                " | " +
                (signalAccess(signal) == Access::factory ? "root and sysctrl-factory"
                                                         : "also sysctrl-service") +
                " |\n";
    }
    return text;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string what = argc >= 2 ? argv[1] : "";
    std::string text;
    if (what == "xml") {
        text = xmlText();
    } else if (what == "policy") {
        text = policyText();
    } else if (what == "operations") {
        text = operationsTable();
    } else if (what == "dbus-methods") {
        text = busMethodsTable();
    } else if (what == "dbus-signals") {
        text = busSignalsTable();
    }
    if (text.empty() || argc > 3) {
        std::cerr << "usage: sysctrl-describe-interface "
                     "xml|policy|operations|dbus-methods|dbus-signals [FILE]\n";
        return 2;
    }
    if (argc == 3) {
        std::ofstream file(argv[2], std::ios::binary | std::ios::trunc);
        file << text;
        return file.good() ? 0 : 1;
    }
    std::cout << text;
    return std::cout.good() ? 0 : 1;
}
