// What the tests of OLED panel care share: running maintenance and reading its traces.
#ifndef TESTS_OLEDCAREFIXTURE_H
#define TESTS_OLEDCAREFIXTURE_H

#include <set>
#include <string>
#include <vector>

#include "ServiceTest.h"
#include "zo/host/Host.h"

namespace sysctrltest {

const char kRecordsLog[] = "/var/tvservice/oled_maintance_records.log";
const char kRecordsOld[] = "/var/tvservice/oled_maintance_records.old";
const char kRunningTime[] = "/var/tvservice/tvRunningTime";
const char kBoardIni[] = "/quentadata/model/config/board.ini";

typedef std::vector<std::string> Texts;

// The identifiers of a report nobody asked for.
const std::vector<int32_t> kUnsolicitedIds = {-1, -1};
const std::vector<int32_t> kUnsolicitedTransport = {-1, -1, 0, -1, -1, -1, -1};

class OledCareFixture : public ServiceTest {
  protected:
    // Asks for a run and waits until its thread has ended.
    void runMaintenance(unsigned int flag, int request = 1) {
        frame::MsgIds ids = msgIds(request);
        EXPECT_EQ(service().controlOledMaint(ids, transport(request), flag), 0);
        zo::host::waitForThreads();
    }

    void setTempLut(int value) {
        writeFile(kBoardIni, "[OLED]\nOLED_TempLUT = " + std::to_string(value) + "\n");
    }

    // The calls made on `objects` (an object name, or "Object.operation" for one operation), in
    // order, as "Object.operation(arg,...)".
    std::vector<std::string> callsOf(const std::set<std::string>& objects) {
        std::vector<std::string> calls;
        for (const sim::PortCall& call : sim().journal()) {
            if (objects.count(call.object) == 0 &&
                objects.count(call.object + "." + call.operation) == 0) {
                continue;
            }
            std::string args;
            for (const sim::json& arg : call.args) {
                args += (args.empty() ? "" : ",") + arg.dump();
            }
            calls.push_back(call.object + "." + call.operation + "(" + args + ")");
        }
        return calls;
    }

    // The panel-care calls of a maintenance run or an error report.
    std::vector<std::string> panelCareCalls() {
        return callsOf({"OledPanel", "StatusDisplay", "OperationHours", "Video"});
    }

    // The messages of one level, without their prefix.
    std::vector<std::string> messagesAt(uint16_t level) const {
        std::vector<std::string> texts;
        for (const auto& message : messages()) {
            if (message.first == level) {
                texts.push_back(message.second);
            }
        }
        return texts;
    }
};

}  // namespace sysctrltest

#endif
