#ifndef TESTS_TEXTCOMMANDFIXTURE_H
#define TESTS_TEXTCOMMANDFIXTURE_H

#include <string>
#include <vector>

#include "ServiceTest.h"
#include "sim/Json.h"

namespace sysctrltest {

// The texts of the callbacks a client received, one list per callback.
typedef std::vector<std::vector<std::string>> Replies;

// The text-command languages run both through the service and on a controller of their own over
// the simulated set's port object.
class TextCommandFixture : public ServiceTest {
  protected:
    // The set's port object `name`, held as the service holds it (the set keeps ownership).
    template <typename Port>
    boost::shared_ptr<Port> port(const std::string& name) {
        Port* object = dynamic_cast<Port*>(sim().find(name));
        EXPECT_NE(object, nullptr) << name;
        return boost::shared_ptr<Port>(object, [](Port*) {});
    }

    // The text arguments of every `callback` a client received, one list per callback.
    static Replies replies(const sim::RecordingClient& client, const std::string& callback) {
        Replies found;
        for (const sim::RecordingClient::Received& received : client.received(callback)) {
            std::vector<std::string> texts;
            for (const sim::json& arg : received.args) {
                std::string text;
                EXPECT_TRUE(sim::stringFromJson(arg, text)) << arg.dump();
                texts.push_back(text);
            }
            found.push_back(texts);
        }
        return found;
    }

    // The arguments of each journalled call of Object.operation.
    std::vector<sim::json> callArgs(const std::string& object, const std::string& operation) {
        std::vector<sim::json> found;
        for (const sim::PortCall& call : sim().calls(object, operation)) {
            found.push_back(call.args);
        }
        return found;
    }

    // The journalled calls of `object`, each as its operation and its arguments, blank-separated:
    // "start[2] stop[]".
    std::string callsOf(const std::string& object) {
        std::string calls;
        for (const sim::PortCall& call : sim().calls(object)) {
            calls += (calls.empty() ? "" : " ") + call.operation + call.args.dump();
        }
        return calls;
    }

    // How many messages are exactly `text` (without the prefix) at `level`.
    size_t countMessages(uint16_t level, const std::string& text) const {
        size_t count = 0;
        for (const auto& message : messages()) {
            count += message == std::make_pair(level, text) ? 1 : 0;
        }
        return count;
    }
};

}  // namespace sysctrltest

#endif
