// The interface operations as the desk host calls them, from the interface's description.
#include "Operations.h"

#include <cctype>
#include <tuple>
#include <type_traits>
#include <utility>

#include "ServiceDescription.h"

namespace desk {
namespace {

using sysctrlservice::ServiceInterface;

// One reader per argument type of the interface.
template <typename T>
struct Reader;

template <>
struct Reader<int> {
    static int read(Arguments& args) { return args.integer("integer"); }
};
template <>
struct Reader<unsigned int> {
    static unsigned int read(Arguments& args) { return args.unsignedInteger("unsigned integer"); }
};
template <>
struct Reader<unsigned char> {
    static unsigned char read(Arguments& args) { return args.byte("byte"); }
};
template <>
struct Reader<std::string> {
    static std::string read(Arguments& args) { return args.text("text"); }
};
template <>
struct Reader<sysctrlservice::CaptureType_t> {
    static sysctrlservice::CaptureType_t read(Arguments& args) {
        return static_cast<sysctrlservice::CaptureType_t>(args.integer("capture type"));
    }
};
template <>
struct Reader<sysctrlservice::PowerMode_t> {
    static sysctrlservice::PowerMode_t read(Arguments& args) {
        return static_cast<sysctrlservice::PowerMode_t>(args.integer("power mode"));
    }
};
// NAME=VALUE words up to the end of the line, split at the first "=".
template <>
struct Reader<std::vector<sysctrlservice::fuseitemcontent1_t>> {
    static std::vector<sysctrlservice::fuseitemcontent1_t> read(Arguments& args) {
        std::vector<sysctrlservice::fuseitemcontent1_t> items;
        for (const Word& word : args.rest()) {
            const size_t equals = word.text.find('=');
            items.push_back({word.text.substr(0, equals), equals == std::string::npos
                                                              ? std::string()
                                                              : word.text.substr(equals + 1)});
        }
        return items;
    }
};

// How an argument appears in a command's usage: its name in capitals, or the form of a list.
template <typename T>
std::string usageOf(const sysctrlservice::ArgumentInfo& argument) {
    if constexpr (std::is_same_v<T, std::vector<sysctrlservice::fuseitemcontent1_t>>) {
        return "NAME=VALUE...";
    }
    std::string word = argument.name;
    for (char& c : word) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return word;
}

template <typename... Values>
std::string usage(const sysctrlservice::OperationInfo& info, const std::tuple<Values...>*) {
    std::vector<std::string> words;
    size_t index = 0;
    (words.push_back(usageOf<Values>(info.arguments[index++])), ...);
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

template <typename... Values>
std::tuple<Values...> readValues(Arguments& args, const std::tuple<Values...>*) {
    // A braced list reads the words from left to right.
    return std::tuple<Values...>{Reader<Values>::read(args)...};
}

template <auto Member>
Operation bind(const sysctrlservice::OperationInfo& info,
               sysctrlservice::description::MemberConstant<Member>) {
    using Values = typename sysctrlservice::description::Parameters<decltype(Member)>::Tuple;
    return Operation{
        info.name, usage(info, static_cast<const Values*>(nullptr)), info.summary,
        [](ServiceInterface& service, frame::MsgIds& msgIds, const frame::TransportInfo& transport,
           Arguments& args, int& status) {
            Values values = readValues(args, static_cast<const Values*>(nullptr));
            if (!args.finish()) {
                return false;
            }
            status = std::apply(
                [&](auto&... value) { return (service.*Member)(msgIds, transport, value...); },
                values);
            return true;
        }};
}

}  // namespace

const std::vector<Operation>& operations() {
    static const std::vector<Operation> table = [] {
        std::vector<Operation> all;
        sysctrlservice::forEachOperation(
            [&all](const sysctrlservice::OperationInfo& info, auto member) {
                all.push_back(bind(info, member));
            });
        return all;
    }();
    return table;
}

const Operation* findOperation(const std::string& name) {
    for (const Operation& operation : operations()) {
        if (name == operation.name) {
            return &operation;
        }
    }
    return nullptr;
}

}  // namespace desk
