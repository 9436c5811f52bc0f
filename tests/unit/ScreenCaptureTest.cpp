// Screen capture: the operation, the controller's sequence with the capture port, its log lines
// and the files it leaves.
#include "screencapture.h"

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
            if (line.text.rfind("picturegenerator.cpp:", 0) == 0) {
                continue;
            }
            const size_t end = line.text.find("(): ");
            found.emplace_back(line.level, line.text.substr(end + 4));
        }
        return found;
    }

    std::string file(const std::string& name) const { return m_dir + "/" + name; }

    std::string m_dir;
};

TEST_F(Capture, PngCaptureLogsEveryStepAndWritesTheFrame) {
    start();
    setState("ScreenCapture.width", 40);
    setState("ScreenCapture.height", 30);
    EXPECT_EQ(capture(m_dir, "shot.png", 1), 0);

    EXPECT_EQ(portCalls(), (std::vector<json>{{"isAvailable", {2}}, {"capture", {2}}}));
    const std::vector<LogLine> lines = logs();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0].module, 398);
    EXPECT_EQ(lines[0].level, 4000);
    EXPECT_NE(lines[0].text.find("cmdCaptureScreen(): Called.\n"), std::string::npos);
    EXPECT_EQ(controlMessages(),
              (Messages{{4000, "Called.\n"},
                        {4000, "In convertType type :1.\n"},
                        {4000, "Success: Capture Success. path: " + m_dir + " name: shot.png\n"},
                        {4000, " generate success\n"}}));
    for (const LogLine& line : lines) {
        if (&line != &lines[0]) {
            EXPECT_EQ(line.module, 253) << line.text;
        }
    }

    // The same frame as raw bytes is the reference for the PNG's pixels.
    EXPECT_EQ(capture(m_dir, "shot.raw", 1), 0);
    const std::vector<uint8_t> raw = readBytes(file("shot.raw"));
    ASSERT_EQ(raw.size(), 40u * 30 * 4);
    const DecodedPng png = decodePng(file("shot.png"));
    ASSERT_TRUE(png.ok);
    EXPECT_EQ(png.width, 40u);
    EXPECT_EQ(png.height, 30u);
    EXPECT_TRUE(png.pixels == toRgba(raw));
    EXPECT_TRUE(pngcheckAccepts(file("shot.png")));
}

struct TypeCase {
    int type;
    unsigned int flag;
};

void PrintTo(const TypeCase& c, std::ostream* os) {
    *os << "type " << c.type;
}

class CaptureTypes : public Capture, public ::testing::WithParamInterface<TypeCase> {};

TEST_P(CaptureTypes, MapToThePlatformFlag) {
    start();
    screencapture controller(port());
    EXPECT_EQ(static_cast<unsigned int>(
                  controller.convertType(static_cast<CaptureType_t>(GetParam().type))),
              GetParam().flag);
    Messages expected{{4000, "In convertType type :" + std::to_string(GetParam().type) + ".\n"}};
    if (GetParam().flag == 0) {
        expected.push_back({3000, "Error: can't convertType\n"});
    }
    EXPECT_EQ(messages(), expected);
}

TEST_P(CaptureTypes, AskThePortWithTheFlag) {
    start();
    setAnswer("ScreenCapture.isAvailable", true);
    setAnswer("ScreenCapture.capture", true);
    EXPECT_EQ(capture(m_dir, "x.bmp", GetParam().type), 0);
    EXPECT_EQ(portCalls(), (std::vector<json>{{"isAvailable", {GetParam().flag}},
                                              {"capture", {GetParam().flag}}}));
    EXPECT_EQ(readBytes(file("x.bmp")).at(0), 'B');
}

INSTANTIATE_TEST_SUITE_P(Types, CaptureTypes,
                         ::testing::Values(TypeCase{1, 2}, TypeCase{2, 4}, TypeCase{3, 8},
                                           TypeCase{4, 16}, TypeCase{0, 0}, TypeCase{5, 0},
                                           TypeCase{-1, 0}, TypeCase{-2147483647 - 1, 0},
                                           TypeCase{32, 0}));

TEST_F(Capture, UnknownTypeIsRefusedByThePortAsFlagZero) {
    start();
    for (int type : {0, 5, -1}) {
        clearLogs();
        sim().clearJournal();
        EXPECT_EQ(capture(m_dir, "shot.png", type), 0);
        EXPECT_EQ(portCalls(), (std::vector<json>{{"isAvailable", {0}}}));
        EXPECT_EQ(controlMessages(),
                  (Messages{{4000, "Called.\n"},
                            {4000, "In convertType type :" + std::to_string(type) + ".\n"},
                            {3000, "Error: can't convertType\n"},
                            {1000, "Fail: Current is not available\n"}}));
    }
    EXPECT_TRUE(std::filesystem::is_empty(m_dir));
}

TEST_F(Capture, TypeNotAvailableTakesNoPicture) {
    start();
    setState("ScreenCapture.availableTypes", 4);
    EXPECT_EQ(capture(m_dir, "shot.png", 1), 0);
    EXPECT_EQ(portCalls(), (std::vector<json>{{"isAvailable", {2}}}));
    EXPECT_EQ(controlMessages().back(),
              std::make_pair(uint16_t{1000}, std::string("Fail: Current is not available\n")));
    EXPECT_TRUE(std::filesystem::is_empty(m_dir));
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

TEST_F(Capture, FrameLargerThanTheBufferIsACaptureFailure) {
    start();
    setState("ScreenCapture.width", 2000);
    setState("ScreenCapture.height", 1100);
    EXPECT_EQ(capture(m_dir, "big.raw", 1), 0);
    EXPECT_EQ(controlMessages().back(),
              std::make_pair(uint16_t{1000}, std::string("Fail: Capture failed!\n")));
    EXPECT_FALSE(fileExists(file("big.raw")));
}

struct StoreFailure {
    const char* name;
    const char* writerLine;
};

void PrintTo(const StoreFailure& c, std::ostream* os) {
    *os << c.name;
}

class CaptureStoreFailure : public Capture, public ::testing::WithParamInterface<StoreFailure> {};

TEST_P(CaptureStoreFailure, MissingDirectoryLogsSuccessThenTheStoringError) {
    start();
    const std::string missing = m_dir + "/missing";
    EXPECT_EQ(capture(missing, GetParam().name, 2), 0);
    EXPECT_EQ(controlMessages(), (Messages{{4000, "Called.\n"},
                                           {4000, "In convertType type :2.\n"},
                                           {4000, "Success: Capture Success. path: " + missing +
                                                      " name: " + GetParam().name + "\n"},
                                           {3000, "ERROR: can't generatePNG\n"}}));
    EXPECT_EQ(logsContaining(GetParam().writerLine).size(), 1u);
    EXPECT_FALSE(std::filesystem::exists(missing));
}

INSTANTIATE_TEST_SUITE_P(Writers, CaptureStoreFailure,
                         ::testing::Values(StoreFailure{"shot.png", "Error: can't open the file."},
                                           StoreFailure{"shot.bmp", "Failed to open BMP file"},
                                           StoreFailure{"shot.raw", "Failed to open RAW file"}));

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
    EXPECT_EQ(controller.do_capture(m_dir, "a.raw", CaptureType_t::CAPTURE_TYPE_4), 1);
    EXPECT_FALSE(controller.holdsBuffer());
    EXPECT_EQ(controller.do_capture(m_dir, "b.raw", CaptureType_t::CAPTURE_TYPE_4), 1);
    EXPECT_FALSE(controller.holdsBuffer());
    EXPECT_EQ(controller.do_capture(m_dir + "/missing", "c.raw", CaptureType_t::CAPTURE_TYPE_4), 0);
    EXPECT_FALSE(controller.holdsBuffer());
    setAnswer("ScreenCapture.capture", false);
    EXPECT_EQ(controller.do_capture(m_dir, "d.raw", CaptureType_t::CAPTURE_TYPE_4), 0);
    EXPECT_FALSE(controller.holdsBuffer());
    EXPECT_EQ(sim().calls("ScreenCapture", "capture").size(), 4u);
    EXPECT_EQ(readBytes(file("a.raw")), readBytes(file("b.raw")));
    EXPECT_FALSE(fileExists(file("d.raw")));
}

TEST_F(Capture, TheBufferHandedToThePortIsZeroed) {
    start();
    setState("ScreenCapture.width", 1920);
    setState("ScreenCapture.height", 1080);
    EXPECT_EQ(capture(m_dir, "before.raw", 1), 0);
    // The next buffer may reuse the memory of the last one; it must still arrive zeroed.
    setState("ScreenCapture.pattern", "none");
    EXPECT_EQ(capture(m_dir, "zero.raw", 1), 0);
    const std::vector<uint8_t> raw = readBytes(file("zero.raw"));
    ASSERT_EQ(raw.size(), 1920u * 1080 * 4);
    EXPECT_EQ(std::count(raw.begin(), raw.end(), 0), static_cast<long>(raw.size()));
}

TEST_F(Capture, SolidPixelBecomesEachFormatsBytes) {
    start();
    setState("ScreenCapture.pattern", "solid");
    setState("ScreenCapture.color", "10203040");
    setState("ScreenCapture.width", 1);
    setState("ScreenCapture.height", 1);
    for (const char* name : {"p.png", "p.bmp", "p.raw"}) {
        EXPECT_EQ(capture(m_dir, name, 1), 0);
    }
    EXPECT_EQ(decodePng(file("p.png")).pixels, (std::vector<uint8_t>{0x30, 0x20, 0x10, 0x40}));
    const std::vector<uint8_t> bmp = readBytes(file("p.bmp"));
    EXPECT_EQ(std::vector<uint8_t>(bmp.begin() + 54, bmp.end()),
              (std::vector<uint8_t>{0x10, 0x20, 0x30, 0x00}));
    EXPECT_EQ(readBytes(file("p.raw")), (std::vector<uint8_t>{0x10, 0x20, 0x30, 0x40}));
}

TEST_F(Capture, SupportInfoIsAskedOnlyWhenWanted) {
    start();
    setState("ScreenCapture.availableTypes", 2 | 16);
    screencapture controller(port());
    EXPECT_FALSE(controller.checkSupport(zo::port::SCREEN_CAPTURE_TYPE_1))
        << "nothing is known before getSupportInfo";
    EXPECT_TRUE(sim().calls("ScreenCapture").empty());

    controller.getSupportInfo();
    EXPECT_EQ(sim().calls("ScreenCapture", "getSupportInfo").size(), 1u);
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
