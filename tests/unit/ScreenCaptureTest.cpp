// Screen capture: the operation, the controller's sequence with the capture port, its log lines
// and the files it leaves.
#include "screencapture.h"

#include <climits>
#include <filesystem>

#include "PictureFiles.h"
#include "ServiceTest.h"
#include "zo/host/Host.h"
#include "zo/port/Factory.h"
#include "zo/port/Pier.h"

namespace sysctrltest {
namespace {

using sim::json;
using sysctrlservice::CaptureType_t;
using sysctrlservice::screencapture;
typedef std::vector<std::pair<uint16_t, std::string>> Messages;

class Capture : public ServiceTest {
  protected:
    void SetUp() override {
        ServiceTest::SetUp();
        m_dir = m_root + "/captures";
        std::filesystem::create_directories(m_dir);
    }

    void start() {
        startService();
        forget();
    }

    void forget() {
        sim().clearJournal();
        clearLogs();
    }

    int capture(const std::string& path, const std::string& name, int type) {
        frame::MsgIds ids = msgIds(1);
        return service().cmdCaptureScreen(ids, transport(1), path, name,
                                          static_cast<CaptureType_t>(type));
    }

    // The simulated capture port, as the platform hands it out.
    boost::shared_ptr<zo::port::ScreenCapture> port() {
        auto* pier = static_cast<zo::port::Pier*>(
            zo::host::lookupInterface("zorbel.lm.interfaces.port.pier"));
        boost::shared_ptr<zo::port::ScreenCapture> object = pier->getFactory()->getScreenCapture();
        sim().clearJournal();
        return object;
    }

    // The capture port's calls as [operation, args].
    std::vector<json> portCalls() {
        std::vector<json> found;
        for (const sim::PortCall& call : sim().calls("ScreenCapture")) {
            found.push_back(json::array({call.operation, call.args}));
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
// which the port refuses, so nothing is written.
TEST_F(Capture, TypesAreAskedForAsThePortsFlags) {
    start();
    const std::pair<int, unsigned int> cases[] = {{1, 2}, {2, 4},  {3, 8},       {4, 16}, {0, 0},
                                                  {5, 0}, {-1, 0}, {INT_MIN, 0}, {32, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.first);
        forget();
        std::filesystem::remove(file("x.bmp"));
        EXPECT_EQ(capture(m_dir, "x.bmp", c.first), 0);
        Messages expected{{4000, "Called.\n"},
                          {4000, "In convertType type :" + std::to_string(c.first) + ".\n"}};
        if (c.second == 0) {
            expected.insert(expected.end(), {{3000, "Error: can't convertType\n"},
                                             {1000, "Fail: Current is not available\n"}});
            EXPECT_EQ(portCalls(), (std::vector<json>{{"isAvailable", {0}}}));
        } else {
            expected.insert(expected.end(),
                            {{4000, "Success: Capture Success. path: " + m_dir + " name: x.bmp\n"},
                             {4000, " generate success\n"}});
            EXPECT_EQ(portCalls(),
                      (std::vector<json>{{"isAvailable", {c.second}}, {"capture", {c.second}}}));
        }
        EXPECT_EQ(controlMessages(), expected);
        const Bytes bmp = readBytes(file("x.bmp"));
        EXPECT_EQ(bmp.size() > 54 && bmp[0] == 'B' && bmp[1] == 'M', c.second != 0);
    }
}

// Only the entry trace is the capture module's; the PNG holds the frame the port filled.
TEST_F(Capture, PngHoldsTheCapturedFrame) {
    start();
    setState("ScreenCapture.width", 40);
    setState("ScreenCapture.height", 30);
    EXPECT_EQ(capture(m_dir, "shot.png", 1), 0);
    EXPECT_EQ(capture(m_dir, "shot.raw", 1), 0);  // the same frame, as the reference
    EXPECT_EQ(logsContaining("cmdCaptureScreen(): Called.").size(), 2u);
    for (const LogLine& line : logs()) {
        EXPECT_EQ(line.module, line.text.find("(): Called.\n") != std::string::npos ? 398 : 253)
            << line.text;
    }
    const Bytes raw = readBytes(file("shot.raw"));
    ASSERT_EQ(raw.size(), 40u * 30 * 4);
    const DecodedPng png = decodePng(file("shot.png"));
    EXPECT_EQ(std::make_pair(png.width, png.height), std::make_pair(40u, 30u));
    EXPECT_TRUE(png.pixels == toRgba(raw));
    EXPECT_TRUE(pngcheckAccepts(file("shot.png")));
}

TEST_F(Capture, FailedCaptureWritesNothing) {
    start();
    setAnswer("ScreenCapture.capture", false);
    EXPECT_EQ(capture(m_dir, "shot.png", 3), 0);
    EXPECT_EQ(portCalls(), (std::vector<json>{{"isAvailable", {8}}, {"capture", {8}}}));
    EXPECT_EQ(controlMessages(), (Messages{{4000, "Called.\n"},
                                           {4000, "In convertType type :3.\n"},
                                           {1000, "Fail: Capture failed!\n"}}));
    EXPECT_TRUE(std::filesystem::is_empty(m_dir));
}

// The success line is written before the file is stored, so it precedes a storing failure too.
TEST_F(Capture, MissingDirectoryLogsSuccessThenTheStoringError) {
    start();
    const std::string missing = m_dir + "/missing";
    for (const char* name : {"shot.png", "shot.bmp", "shot.raw"}) {
        SCOPED_TRACE(name);
        clearLogs();
        EXPECT_EQ(capture(missing, name, 2), 0);
        EXPECT_EQ(controlMessages(), (Messages{{4000, "Called.\n"},
                                               {4000, "In convertType type :2.\n"},
                                               {4000, "Success: Capture Success. path: " + missing +
                                                          " name: " + name + "\n"},
                                               {3000, "ERROR: can't generatePNG\n"}}));
    }
    EXPECT_FALSE(std::filesystem::exists(missing));
}

TEST_F(Capture, MissingCapturePortIsReportedAsNotAvailable) {
    setAbsent("ScreenCapture");
    start();
    EXPECT_EQ(capture(m_dir, "shot.png", 1), 0);
    EXPECT_EQ(controlMessages(), (Messages{{4000, "Called.\n"},
                                           {4000, "In convertType type :1.\n"},
                                           {1000, "Fail: Current is not available\n"}}));
    EXPECT_TRUE(std::filesystem::is_empty(m_dir));

    screencapture controller{boost::shared_ptr<zo::port::ScreenCapture>()};
    EXPECT_FALSE(controller.checkAvailable(zo::port::SCREEN_CAPTURE_TYPE_1));
    controller.getSupportInfo();
    EXPECT_FALSE(controller.checkSupport(zo::port::SCREEN_CAPTURE_TYPE_1));
}

TEST_F(Capture, DoCaptureReturnsWhetherTheFileWasWrittenAndFreesTheBuffer) {
    start();
    screencapture controller(port());
    EXPECT_FALSE(controller.holdsBuffer());
    const auto run = [&](const std::string& dir, const char* name) {
        const int written = controller.do_capture(dir, name, CaptureType_t::CAPTURE_TYPE_4);
        EXPECT_FALSE(controller.holdsBuffer()) << name;
        return written;
    };
    EXPECT_EQ(run(m_dir, "a.raw"), 1);
    EXPECT_EQ(run(m_dir, "b.raw"), 1);
    EXPECT_EQ(run(m_dir + "/missing", "c.raw"), 0);
    setAnswer("ScreenCapture.capture", false);
    EXPECT_EQ(run(m_dir, "d.raw"), 0);
    EXPECT_EQ(sim().calls("ScreenCapture", "capture").size(), 4u);
    EXPECT_EQ(readBytes(file("a.raw")), readBytes(file("b.raw")));
    EXPECT_EQ(fileMode(file("d.raw")), -1);
}

TEST_F(Capture, TheBufferHandedToThePortIsZeroed) {
    start();
    setState("ScreenCapture.width", 1920);
    setState("ScreenCapture.height", 1080);
    EXPECT_EQ(capture(m_dir, "before.raw", 1), 0);
    // The next buffer may reuse the memory of the last one; it must still arrive zeroed.
    setState("ScreenCapture.pattern", "none");
    EXPECT_EQ(capture(m_dir, "zero.raw", 1), 0);
    const Bytes raw = readBytes(file("zero.raw"));
    ASSERT_EQ(raw.size(), 1920u * 1080 * 4);
    EXPECT_TRUE(raw == Bytes(raw.size(), 0));
}

// One pixel with bytes 10 20 30 40 (blue, green, red, alpha) in each format.
TEST_F(Capture, SolidPixelBecomesEachFormatsBytes) {
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
}

TEST_F(Capture, SupportInfoIsAskedOnlyWhenWanted) {
    start();
    setState("ScreenCapture.availableTypes", 2 | 16);
    screencapture controller(port());
    EXPECT_FALSE(controller.checkSupport(zo::port::SCREEN_CAPTURE_TYPE_1))
        << "nothing is known before getSupportInfo";
    controller.getSupportInfo();
    EXPECT_EQ(portCalls(), (std::vector<json>{{"getSupportInfo", json::array()}}));
    EXPECT_TRUE(controller.checkSupport(zo::port::SCREEN_CAPTURE_TYPE_1));
    EXPECT_FALSE(controller.checkSupport(zo::port::SCREEN_CAPTURE_TYPE_2));
    EXPECT_TRUE(controller.checkSupport(zo::port::SCREEN_CAPTURE_TYPE_4));
    controller.printSupportInfo();
    EXPECT_TRUE(logs().empty());

    // A capture does not ask for it.
    sim().clearJournal();
    EXPECT_EQ(capture(m_dir, "s.raw", 1), 0);
    EXPECT_TRUE(sim().calls("ScreenCapture", "getSupportInfo").empty());
}

}  // namespace
}  // namespace sysctrltest
