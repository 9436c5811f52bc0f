#ifndef FUZZ_FUZZSERVICE_H
#define FUZZ_FUZZSERVICE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "Application.h"
#include "FuzzInput.h"
#include "RecordingClient.h"
#include "sim/SimSet.h"

namespace sysctrlfuzz {

class FuzzService;

// One call of an input: where its pieces come from, the service and the call's identifiers.
struct FuzzCall {
    FuzzInput& input;
    FuzzService& fuzz;
    sysctrlservice::ServiceInterface& service;
    frame::MsgIds ids;
    const frame::TransportInfo transport;
};
// Reads one call's pieces from the input, prepares the set and makes the call. Returns whether the
// call answers (one callback); a call that refuses answers nothing.
typedef std::function<bool(FuzzCall& call)> CallMaker;

// One simulated set and one started service with one registered client for the whole process,
// brought back to a fresh set's state before each input: making them anew per input costs more
// than most inputs. The log goes nowhere (every level is still formatted).
class FuzzService {
  public:
    static FuzzService& instance();

    // Objects' state and scripted answers, the journal and the client's callbacks back to new.
    void reset();
    // A new application in place of the old one, set up and started with the client registered
    // (start loads the records files).
    void restart();

    sysctrlservice::ServiceInterface& service() { return *m_application; }
    sim::SimSet& sim() { return *m_sim; }
    // Identifiers for the k-th call of an input.
    static frame::MsgIds msgIds(int k) { return frame::MsgIds{{k, 7}}; }
    static frame::TransportInfo transport(int k) {
        return frame::TransportInfo{{k, 1, 2, 3, 4, 5, 6}};
    }
    // Aborts unless the client received one callback for each call k in `answered`, in order, with
    // the identifiers msgIds(k) and transport(k), and nothing else.
    void expectAnswers(const std::vector<int>& answered) const;
    // The same for calls 1 to `count`: every call answers once, with the caller's identifiers.
    void expectAnswers(int count) const;
    // Sets a piece of simulated state; aborts on a key the set does not know.
    void setState(const std::string& objectKey, const sim::json& value);
    // Scripts a port operation's answer; aborts on an operation the set does not know.
    void setAnswer(const std::string& objectOperation, const sim::json& result,
                   const sim::json& outputs);
    // The body of a target that makes calls: resets the service, then makes calls 1, 2, ... with
    // `makeCall` until the input is used up (at least one call, even for an empty input), and
    // aborts unless each answering call answered once with its identifiers. Returns 0, as a
    // target does for an input it ran.
    static int runCalls(const uint8_t* data, size_t size, const CallMaker& makeCall);
    // A system path under the process's file-system root.
    static std::string rootPath(const std::string& systemPath);

  private:
    FuzzService();
    void create();
    void destroy();

    std::string m_root;
    std::unique_ptr<sim::SimSet> m_sim;
    frame::AbstractApplication** m_applications = nullptr;
    sysctrlservice::Application* m_application = nullptr;
    boost::shared_ptr<sim::RecordingClient> m_client;
};

}  // namespace sysctrlfuzz

#endif
