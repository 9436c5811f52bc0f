// Screen capture: the operation, the controller's sequence with the capture port, its log lines
// and the files it leaves.
#include "screencapture.h"

#include <climits>
#include <filesystem>

#include "PictureFiles.h"
#include "ServiceTest.h"

namespace sysctrltest {
namespace {

using sysctrlservice::CaptureType_t;
using sysctrlservice::screencapture;
typedef std::vector<std::pair<uint16_t, std::string>> Messages;

class Capture : public ServiceTest {
  protected:
    void start() {
        m_dir = m_root + "/captures";
        std::filesystem::create_directories(m_dir);
        startService();
        sim().clearJournal();
        clearLogs();
    }

    int capture(const std::string& path, const std::string& name, int type) {
        frame::MsgIds ids = msgIds(1);
        return service().cmdCaptureScreen(ids, transport(1), path, name,
                                          static_cast<CaptureType_t>(type));
    }

    // The simulated capture port itself (the set owns it).
    boost::shared_ptr<zo::port::ScreenCapture> port() {
        return boost::shared_ptr<zo::port::ScreenCapture>(
            dynamic_cast<zo::port::ScreenCapture*>(sim().find("ScreenCapture")), [](void*) {});
    }

    // The capture port's calls, as "operation[args]" each.
    std::string portCalls() {
        std::string found;
        for (const sim::PortCall& call : sim().calls("ScreenCapture")) {
            found += call.operation + call.args.dump();
        }
        return found;
    }

    // The messages of the capture controller and the operation, without the writers' own.
    Messages controlMessages() const {
        Messages found;
        for (const LogLine& line : logs()) {
            if (line.text.rfind("picturegenerator.cpp:", 0) != 0) {
                found.emplace_back(line.level, line.text.substr(line.text.find("(): ") + 4));
            }
        }
        return found;
    }

    std::string file(const std::string& name) const { return m_dir + "/" + name; }

    std::string m_dir;
};

// Types 1 to 4 are asked for as flags 2 to 16; any other is logged and asked for as flag 0,
// which the port refuses, so nothing is written. The entry trace is the capture module's.
TEST_F(Capture, TypesAreAskedForAsThePortsFlags) {
    start();
    const std::pair<int, unsigned int> cases[] = {{1, 2}, {2, 4},  {3, 8},       {4, 16}, {0, 0},
                                                  {5, 0}, {-1, 0}, {INT_MIN, 0}, {32, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first);
        clearLogs();
        sim().clearJournal();
        const std::string name = "type" + std::to_string(c.first) + ".bmp";
        EXPECT_EQ(capture(m_dir, name, c.first), 0);
        const std::string flag = "[" + std::to_string(c.second) + "]";
        EXPECT_EQ(portCalls(), "isAvailable" + flag + (c.second != 0 ? "capture" + flag : ""));
        Messages expected{{4000, "Called.\n"},
                          {4000, "In convertType type :" + std::to_string(c.first) + ".\n"},
                          {3000, "Error: can't convertType\n"},
                          {1000, "Fail: Current is not available\n"}};
        if (c.second != 0) {
            expected[2] = {4000,
                           "Success: Capture Success. path: " + m_dir + " name: " + name + "\n"};
            expected[3] = {4000, " generate success\n"};
        }
        EXPECT_EQ(controlMessages(), expected);
        EXPECT_EQ(logs().front().module, 398);
        EXPECT_EQ(logs().back().module, 253);
        // A BMP of the port's 64 x 36 frame.
        EXPECT_EQ(readBytes(file(name)).size(), c.second != 0 ? 54u + 64 * 36 * 3 : 0u);
    }
}

// do_capture's result and log lines for each outcome in a row; the buffer is held only during each
// call. The success line comes before the file is stored, so it also precedes a storing failure,
// whatever the format.
TEST_F(Capture, DoCaptureReportsEachOutcomeAndFreesTheBuffer) {
    start();
    screencapture controller(port());
    EXPECT_FALSE(controller.holdsBuffer());
    // The conversion, the success line once captured (not after a port failure at 1000), `last`.
    const auto run = [&](const std::string& dir, const std::string& name, int written,
                         const std::pair<uint16_t, std::string>& last) {
        SCOPED_TRACE(dir + "/" + name);
        clearLogs();
        EXPECT_EQ(controller.do_capture(dir, name, CaptureType_t::CAPTURE_TYPE_4), written);
        EXPECT_FALSE(controller.holdsBuffer());
        Messages expected{{4000, "In convertType type :4.\n"}};
        if (last.first != 1000) {
            expected.push_back(
                {4000, "Success: Capture Success. path: " + dir + " name: " + name + "\n"});
        }
        expected.push_back(last);
        EXPECT_EQ(controlMessages(), expected);
    };
    run(m_dir, "a.raw", 1, {4000, " generate success\n"});
    for (const char* name : {"c.png", "c.bmp", "c.raw"}) {
        run(m_dir + "/missing", name, 0, {3000, "ERROR: can't generatePNG\n"});
    }
    setAnswer("ScreenCapture.capture", false);
    run(m_dir, "d.raw", 0, {1000, "Fail: Capture failed!\n"});
    EXPECT_EQ(fileMode(file("d.raw")), -1);
}

TEST_F(Capture, MissingCapturePortIsReportedAsNotAvailable) {
    setAbsent("ScreenCapture");
    start();
    EXPECT_EQ(capture(m_dir, "shot.png", 1), 0);
    EXPECT_EQ(controlMessages(), (Messages{{4000, "Called.\n"},
                                           {4000, "In convertType type :1.\n"},
                                           {1000, "Fail: Current is not available\n"}}));
    screencapture controller{boost::shared_ptr<zo::port::ScreenCapture>()};
    controller.getSupportInfo();
    EXPECT_FALSE(controller.checkSupport(zo::port::SCREEN_CAPTURE_TYPE_1));
}

// One pixel with bytes 10 20 30 40 (blue, green, red, alpha) in each format; the buffer arrives
// zeroed.
TEST_F(Capture, FilesHoldThePortsPixelsFromAZeroedBuffer) {
    start();
    setState("ScreenCapture.pattern", "solid");
    setState("ScreenCapture.color", "10203040");
    setState("ScreenCapture.width", 1);
    setState("ScreenCapture.height", 1);
    for (const char* name : {"p.png", "p.bmp", "p.raw"}) {
        EXPECT_EQ(capture(m_dir, name, 1), 0);
    }
    EXPECT_EQ(decodePng(file("p.png")).pixels, (Bytes{0x30, 0x20, 0x10, 0x40}));
    const Bytes bmp = readBytes(file("p.bmp"));
    EXPECT_EQ(Bytes(bmp.begin() + 54, bmp.end()), (Bytes{0x10, 0x20, 0x30, 0x00}));
    EXPECT_EQ(readBytes(file("p.raw")), (Bytes{0x10, 0x20, 0x30, 0x40}));
    // The port leaves this frame as it got the buffer, which may reuse the last one's memory.
    setState("ScreenCapture.pattern", "none");
    EXPECT_EQ(capture(m_dir, "zero.raw", 1), 0);
    EXPECT_EQ(readBytes(file("zero.raw")), Bytes(4, 0));
}

// The simulated port's test card at full size, through the service's PNG writer: a few pixels
// of each part of the picture.
TEST_F(Capture, TestCardHoldsBarsRampLinesAndText) {
    start();
    setState("ScreenCapture.pattern", "testcard");
    setState("ScreenCapture.width", 1920);
    setState("ScreenCapture.height", 1080);
    EXPECT_EQ(capture(m_dir, "card.png", 1), 0);
    const DecodedPng png = decodePng(file("card.png"));
    ASSERT_EQ(png.width, 1920u);
    ASSERT_EQ(png.height, 1080u);
    const struct {
        uint32_t x, y;
        Bytes rgba;
        const char* what;
    } cases[] = {
        {120, 300, {255, 255, 255, 255}, "white bar"},
        {360, 300, {255, 255, 0, 255}, "yellow bar"},
        {600, 300, {0, 255, 255, 255}, "cyan bar"},
        {840, 300, {0, 255, 0, 255}, "green bar"},
        {1080, 300, {255, 0, 255, 255}, "magenta bar"},
        {1320, 300, {255, 0, 0, 255}, "red bar"},
        {1560, 300, {0, 0, 255, 255}, "blue bar"},
        {1800, 629, {0, 0, 0, 255}, "black bar, last row"},
        {0, 630, {0, 0, 0, 255}, "ramp starts black"},
        {960, 700, {127, 127, 127, 255}, "ramp at the middle"},
        {1919, 809, {255, 255, 255, 255}, "ramp ends white"},
        {100, 850, {255, 255, 255, 255}, "1-pixel vertical line"},
        {101, 850, {0, 0, 0, 255}, "gap between 1-pixel vertical lines"},
        {601, 850, {255, 255, 255, 255}, "2-pixel vertical line"},
        {602, 850, {0, 0, 0, 255}, "gap between 2-pixel vertical lines"},
        {1000, 850, {255, 255, 255, 255}, "horizontal line"},
        {1000, 851, {0, 0, 0, 255}, "gap between horizontal lines"},
        {1501, 851, {255, 255, 255, 255}, "checkerboard"},
        {20, 1000, {32, 32, 32, 255}, "text background"},
        {160, 960, {32, 32, 32, 255}, "left of the S's top stroke"},
        {170, 960, {255, 255, 255, 255}, "the S's top stroke"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const size_t at = (static_cast<size_t>(c.y) * png.width + c.x) * 4;
        EXPECT_EQ(Bytes(png.pixels.begin() + at, png.pixels.begin() + at + 4), c.rgba);
    }
}

// Not part of the capture sequence: the port is asked only by getSupportInfo.
TEST_F(Capture, SupportInfoIsKeptFromThePortsAnswer) {
    start();
    setState("ScreenCapture.availableTypes", 2 | 16);
    screencapture controller(port());
    EXPECT_FALSE(controller.checkSupport(zo::port::SCREEN_CAPTURE_TYPE_1));
    controller.getSupportInfo();
    EXPECT_EQ(portCalls(), "getSupportInfo[]");
    EXPECT_TRUE(controller.checkSupport(zo::port::SCREEN_CAPTURE_TYPE_1));
    EXPECT_FALSE(controller.checkSupport(zo::port::SCREEN_CAPTURE_TYPE_2));
    EXPECT_TRUE(controller.checkSupport(zo::port::SCREEN_CAPTURE_TYPE_4));
}

}  // namespace
}  // namespace sysctrltest
