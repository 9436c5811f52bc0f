// The operating-time records as a power cut may leave them: the records file, its predecessor and
// the running-time file, separated by the byte 0x1E, written under the file-system root before the
// service starts. The started service then reports operating time. (Writing the records back ends
// in sync(), which takes up to a second on a busy machine: the writer is left to the unit tests.)
#include <cstdint>
#include <fstream>

#include "FuzzInput.h"
#include "FuzzService.h"

using sysctrlfuzz::FuzzService;

namespace {

void writeFile(const char* systemPath, const std::string& content) {
    std::ofstream(FuzzService::rootPath(systemPath), std::ios::binary | std::ios::trunc) << content;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzService& fuzz = FuzzService::instance();
    fuzz.reset();
    sysctrlfuzz::FuzzInput input(data, size);
    writeFile("/var/tvservice/oled_maintance_records.log", input.takeUntil('\x1e'));
    writeFile("/var/tvservice/oled_maintance_records.old", input.takeUntil('\x1e'));
    writeFile("/var/tvservice/tvRunningTime", input.takeRest());
    fuzz.restart();
    frame::MsgIds first = FuzzService::msgIds(1);
    fuzz.service().requestOptimeInfo(first, FuzzService::transport(1));
    fuzz.expectAnswers(1);
    return 0;
}
