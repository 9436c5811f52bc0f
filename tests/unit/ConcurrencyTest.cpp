// Operations, client changes, events and panel errors arriving on several threads at once, as the
// RPC layer, the event manager and the panel's callback thread deliver them. Bounded in
// iterations; a run that does not end within a minute counts as a deadlock. Meant for the
// thread sanitizer's build too, where a data race fails the run.
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <map>
#include <thread>

#include "ServiceTest.h"
#include "zo/host/Host.h"

namespace sysctrltest {
namespace {

using Received = sim::RecordingClient::Received;

const std::chrono::seconds kDeadlockAfter(60);

// Lets a group of threads leave together, round after round.
class Barrier {
  public:
    explicit Barrier(int count) : m_count(count) {}
    void arriveAndWait() {
        std::unique_lock<std::mutex> lock(m_mutex);
        const int generation = m_generation;
        if (++m_waiting == m_count) {
            m_waiting = 0;
            ++m_generation;
            m_changed.notify_all();
            return;
        }
        m_changed.wait(lock, [&] { return m_generation != generation; });
    }

  private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    const int m_count;
    int m_waiting = 0;
    int m_generation = 0;
};

// Runs each job on its own thread and waits for all; a job still running after kDeadlockAfter
// ends the test program, as its threads cannot be joined.
void runConcurrently(const std::vector<std::function<void()>>& jobs) {
    std::vector<std::future<void>> running;
    for (const auto& job : jobs) {
        running.push_back(std::async(std::launch::async, job));
    }
    const auto deadline = std::chrono::steady_clock::now() + kDeadlockAfter;
    for (auto& future : running) {
        if (future.wait_until(deadline) != std::future_status::ready) {
            std::fprintf(stderr, "threads still running after %lld s: deadlock\n",
                         static_cast<long long>(kDeadlockAfter.count()));
            std::abort();
        }
    }
}

// The identifiers of the callbacks of one name, counted.
std::map<int32_t, int> countByFirstId(const std::vector<Received>& received) {
    std::map<int32_t, int> counts;
    for (const Received& r : received) {
        ++counts[r.msgIds[0]];
    }
    return counts;
}

class Concurrency : public StartedServiceTest {
  protected:
    // Identifiers of call k of thread `lane`: unique across the test, the transport derived from
    // them, so that any mix-up shows.
    static frame::MsgIds ids(int lane, int k) { return frame::MsgIds{{lane * 100000 + k, lane}}; }
    static frame::TransportInfo from(int lane, int k) {
        return frame::TransportInfo{{lane * 100000 + k, lane, k, 1, 2, 3, 4}};
    }

    // The calls k of `lane` for k in `calls` each reached `client` exactly once as `callback`,
    // with the caller's identifiers unchanged; nothing else of the lane came as `callback`.
    static void expectOneAnswerPerCall(const sim::RecordingClient& client,
                                       const std::string& callback, int lane,
                                       const std::vector<int>& calls) {
        std::map<int, int> counts;
        for (const Received& r : client.received(callback)) {
            if (r.msgIds[1] != lane) {
                continue;
            }
            const int k = r.msgIds[0] - lane * 100000;
            ++counts[k];
            const frame::TransportInfo t = from(lane, k);
            EXPECT_EQ(r.transport, std::vector<int32_t>(std::begin(t.word), std::end(t.word)));
        }
        std::map<int, int> expected;
        for (int k : calls) {
            expected[k] = 1;
        }
        EXPECT_EQ(counts, expected) << client.name() << " " << callback << " lane " << lane;
    }
    // 0, step, 2*step, ... below `count`, shifted by `offset`.
    static std::vector<int> every(int count, int step = 1, int offset = 0) {
        std::vector<int> ks;
        for (int k = offset; k < count; k += step) {
            ks.push_back(k);
        }
        return ks;
    }
};

// The antenna handle is replaced by setLnbPower while controlAntenna copies it on another thread,
// and two setLnbPower calls replace it at once.
TEST_F(Concurrency, LnbPowerAndAntennaCommandsOnSeveralThreadsEachAnswerOnce) {
    const auto client = addClient("A");
    const int calls = 200;
    auto lnb = [&](int lane) {
        for (int k = 0; k < calls; ++k) {
            frame::MsgIds i = ids(lane, k);
            service().setLnbPower(i, from(lane, k), k % 2);
        }
    };
    runConcurrently({[&] { lnb(1); }, [&] { lnb(2); },
                     [&] {
                         for (int k = 0; k < calls; ++k) {
                             frame::MsgIds i = ids(3, k);
                             service().controlAntenna(i, from(3, k), "getTerrestrialAntenna");
                         }
                     }});
    expectOneAnswerPerCall(*client, "setLnbPowerResult", 1, every(calls));
    expectOneAnswerPerCall(*client, "setLnbPowerResult", 2, every(calls));
    expectOneAnswerPerCall(*client, "controlAntennaResult", 3, every(calls));
    for (const Received& r : client->received("controlAntennaResult")) {
        EXPECT_EQ(r.args[0], "ok supplyVoltage=OFF");
    }
}

// Three callback threads report the same new error mask at once, round after round: each change
// reaches the clients once.
TEST_F(Concurrency, PanelErrorChangeReportedOnThreeThreadsAtOnceReachesClientsOnce) {
    const int rounds = 1000;
    const int threads = 3;
    sim().raiseOledError(0);
    const auto client = addClient("A");
    // Each port call gives the other threads a turn, so that they do arrive while a change is
    // being handled.
    sim().setListener([](const sim::json&) { std::this_thread::yield(); });
    Barrier barrier(threads);
    auto reporter = [&] {
        for (int round = 0; round < rounds; ++round) {
            barrier.arriveAndWait();
            sim().raiseOledError(round % 2 == 0 ? 0x5 : 0xA);
        }
    };
    runConcurrently(std::vector<std::function<void()>>(threads, reporter));
    const std::vector<Received> reports = client->received("oledErrorResult");
    ASSERT_EQ(reports.size(), static_cast<size_t>(rounds));
    for (int round = 0; round < rounds; ++round) {
        EXPECT_EQ(reports[round].args[0], round % 2 == 0 ? 0x5 : 0xA) << round;
    }
}

// Result-producing operations on four threads, clients coming and going on another, operating-time
// events, panel errors and maintenance runs on others. Clients registered throughout get exactly
// one answer per call with the caller's identifiers.
TEST_F(Concurrency, StressEveryRegisteredClientGetsOneAnswerPerCall) {
    const auto first = addClient("first");
    const auto second = addClient("second");
    const int calls = 150;
    std::atomic<bool> callsDone(false);
    std::atomic<int> churned(0);
    std::atomic<int> events(0);

    auto caller = [&](int lane,
                      std::function<void(frame::MsgIds&, const frame::TransportInfo&, int)> call) {
        return [lane, call] {
            for (int k = 0; k < calls; ++k) {
                frame::MsgIds i = ids(lane, k);
                call(i, from(lane, k), k);
            }
        };
    };
    sysctrlservice::ServiceInterface& s = service();
    runConcurrently({
        caller(1, [&](frame::MsgIds& i, const frame::TransportInfo& t,
                      int) { s.controlAntenna(i, t, "getSatelliteAntenna"); }),
        caller(2, [&](frame::MsgIds& i, const frame::TransportInfo& t,
                      int k) { s.setLnbPower(i, t, k % 2); }),
        caller(3,
               [&](frame::MsgIds& i, const frame::TransportInfo& t, int k) {
                   if (k % 2 == 0) {
                       s.controlOpc(i, t, "getOpcState");
                   } else {
                       s.controlUart(i, t, "writeUart", "aGk=");
                   }
               }),
        caller(4,
               [&](frame::MsgIds& i, const frame::TransportInfo& t, int k) {
                   if (k % 3 == 0) {
                       s.getGpio(i, t, "get 12");
                   } else if (k % 3 == 1) {
                       s.requestOptimeInfo(i, t);
                   } else {
                       s.controlFarField(i, t, "getVersion", "");
                   }
               }),
        [&] {
            while (!callsDone.load() || churned.load() < 20) {
                const boost::shared_ptr<sim::RecordingClient> passing(
                    new sim::RecordingClient("passing"));
                EXPECT_EQ(service().addClient(passing), 0);
                EXPECT_EQ(service().removeClient(passing), 0);
                ++churned;
                if (churned.load() >= 5000) {
                    break;
                }
            }
        },
        [&] {
            for (int k = 0; k < 50; ++k) {
                std::vector<sim::SimSet::Delivery> deliveries;
                std::string error;
                EXPECT_TRUE(sim().fireEvent("operationHours", 1, 1, deliveries, error)) << error;
                sim().raiseOledError(k % 2 == 0 ? 0x1 : 0x0);
                ++events;
            }
        },
        [&] {
            for (int k = 0; k < 20; ++k) {
                frame::MsgIds i = ids(7, k);
                service().controlOledMaint(i, from(7, k), 0);
            }
        },
    });
    callsDone = true;
    zo::host::waitForThreads();

    for (const auto& client : {first, second}) {
        expectOneAnswerPerCall(*client, "controlAntennaResult", 1, every(calls));
        expectOneAnswerPerCall(*client, "setLnbPowerResult", 2, every(calls));
        expectOneAnswerPerCall(*client, "controlOpcResult", 3, every(calls, 2));
        expectOneAnswerPerCall(*client, "controlUartResult", 3, every(calls, 2, 1));
        expectOneAnswerPerCall(*client, "getGpioResult", 4, every(calls, 3));
        expectOneAnswerPerCall(*client, "requestOptimeInfoResult", 4, every(calls, 3, 1));
        expectOneAnswerPerCall(*client, "controlFarFieldResult", 4, every(calls, 3, 2));
        // Plus one unsolicited report per operating-time event.
        EXPECT_EQ(countByFirstId(client->received("requestOptimeInfoResult")).at(-1),
                  events.load());
    }
    EXPECT_EQ(first->received().size(), second->received().size());
}

}  // namespace
}  // namespace sysctrltest
