// The picture writers: the format chosen by name, the PNG, BMP and raw files byte by byte, and
// their failure paths.
#include "PictureGenerator.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>

#include "PictureFiles.h"
#include "ServiceTest.h"

namespace sysctrltest {
namespace {

using sysctrlservice::PictureGenerator;

// A frame as the capture port leaves it: blue, green, red, alpha per pixel, top row first.
struct Frame {
    uint32_t width;
    uint32_t height;
    std::vector<uint8_t> pixels;

    // Pseudo-random bytes (xorshift), so that every pixel and every row differs and the
    // compressed image is about as large as the frame.
    static Frame numbered(uint32_t width, uint32_t height) {
        Frame frame{width, height, std::vector<uint8_t>(size_t{width} * height * 4)};
        uint32_t state = 2463534242u + width * 31 + height;
        for (uint8_t& byte : frame.pixels) {
            state ^= state << 13;
            state ^= state >> 17;
            state ^= state << 5;
            byte = static_cast<uint8_t>(state >> 24);
        }
        return frame;
    }

    boost::shared_ptr<zo::port::screenCaptureData> data() {
        boost::shared_ptr<zo::port::screenCaptureData> record(new zo::port::screenCaptureData());
        record->buffer = pixels.empty() ? nullptr : pixels.data();
        record->width = width;
        record->height = height;
        record->stride = width * 4;
        return record;
    }
};

class PictureWriters : public ServiceTest {
  protected:
    void SetUp() override {
        ServiceTest::SetUp();
        m_dir = m_root + "/captures";
        std::filesystem::create_directories(m_dir);
        clearLogs();  // the application's creation
    }

    std::string file(const std::string& name) const { return m_dir + "/" + name; }

    static void put(const std::string& path, const std::string& content) {
        std::ofstream(path, std::ios::binary) << content;
    }

    std::vector<std::string> texts() const {
        std::vector<std::string> found;
        for (const auto& message : messages()) {
            found.push_back(message.second);
        }
        return found;
    }

    std::string m_dir;
};

TEST_F(PictureWriters, ConstructorsFillTheBitMap) {
    const PictureGenerator empty;
    EXPECT_EQ(empty.bitMap().width, 0);
    EXPECT_EQ(empty.bitMap().height, 0);
    EXPECT_EQ(empty.bitMap().bit_depth, 0);
    EXPECT_EQ(empty.bitMap().flag, 0);
    EXPECT_EQ(empty.bitMap().buffer, nullptr);

    Frame frame = Frame::numbered(3, 2);
    const PictureGenerator captured(frame.data());
    EXPECT_EQ(captured.bitMap().width, 3);
    EXPECT_EQ(captured.bitMap().height, 2);
    EXPECT_EQ(captured.bitMap().bit_depth, 8);
    EXPECT_EQ(captured.bitMap().flag, 1);
    EXPECT_EQ(captured.bitMap().buffer, frame.pixels.data());

    const PictureGenerator none{boost::shared_ptr<zo::port::screenCaptureData>()};
    EXPECT_EQ(none.bitMap().width, 0);
    EXPECT_EQ(none.bitMap().buffer, nullptr);
}

// --- the writer chosen by the name's last four characters ---

enum class Format { Png, Bmp, Raw };

struct NameCase {
    const char* name;
    Format format;
};

void PrintTo(const NameCase& c, std::ostream* os) {
    *os << '"' << c.name << '"';
}

class WriterChoice : public PictureWriters, public ::testing::WithParamInterface<NameCase> {};

TEST_P(WriterChoice, LastFourCharactersDecide) {
    Frame frame = Frame::numbered(5, 3);
    PictureGenerator generator(frame.data());
    ASSERT_EQ(generator.generate(m_dir, GetParam().name), 0);

    const std::vector<uint8_t> bytes = readBytes(file(GetParam().name));
    switch (GetParam().format) {
        case Format::Raw:
            EXPECT_EQ(bytes, frame.pixels);
            break;
        case Format::Bmp:
            ASSERT_GE(bytes.size(), 2u);
            EXPECT_EQ(bytes[0], 'B');
            EXPECT_EQ(bytes[1], 'M');
            EXPECT_EQ(bytes.size(), 54u + 3 * 16);
            break;
        case Format::Png:
            EXPECT_TRUE(decodePng(file(GetParam().name)).ok);
            EXPECT_FALSE(fileExists(file("temp.png")));
            break;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Names, WriterChoice,
    ::testing::Values(NameCase{"shot.raw", Format::Raw}, NameCase{".raw", Format::Raw},
                      NameCase{"shot.bmp", Format::Bmp}, NameCase{".bmp", Format::Bmp},
                      NameCase{"shot.png", Format::Png}, NameCase{"shot.jpg", Format::Png},
                      NameCase{"shot", Format::Png}, NameCase{"a.RAW", Format::Png},
                      NameCase{"x.BMP", Format::Png}, NameCase{"shot.PNG", Format::Png},
                      NameCase{"raw", Format::Png}, NameCase{"ab", Format::Png},
                      NameCase{"shot.raw.png", Format::Png}));

// --- PNG ---

struct PngCase {
    const char* name;
    uint32_t width;
    uint32_t height;
};

void PrintTo(const PngCase& c, std::ostream* os) {
    *os << c.name;
}

class PngWriter : public PictureWriters, public ::testing::WithParamInterface<PngCase> {};

TEST_P(PngWriter, DecodesToTheFramesPixelsAsRgba) {
    Frame frame = Frame::numbered(GetParam().width, GetParam().height);
    const std::vector<uint8_t> before = frame.pixels;
    PictureGenerator generator(frame.data());
    ASSERT_EQ(generator.generatePNG(m_dir.c_str(), "shot.png"), 0);

    const DecodedPng png = decodePng(file("shot.png"));
    ASSERT_TRUE(png.ok);
    EXPECT_EQ(png.width, GetParam().width);
    EXPECT_EQ(png.height, GetParam().height);
    EXPECT_EQ(png.bitDepth, 8);
    EXPECT_EQ(png.colorType, PNG_COLOR_TYPE_RGBA);
    EXPECT_EQ(png.interlace, PNG_INTERLACE_NONE);
    EXPECT_EQ(png.compression, PNG_COMPRESSION_TYPE_DEFAULT);
    EXPECT_EQ(png.filter, PNG_FILTER_TYPE_DEFAULT);
    EXPECT_TRUE(png.pixels == toRgba(before)) << "decoded pixels differ from the frame";
    EXPECT_TRUE(frame.pixels == before) << "the writer changed the capture buffer";
    EXPECT_TRUE(pngcheckAccepts(file("shot.png")));
    EXPECT_FALSE(fileExists(file("temp.png")));
}

INSTANTIATE_TEST_SUITE_P(Sizes, PngWriter,
                         ::testing::Values(PngCase{"OnePixel", 1, 1}, PngCase{"Narrow", 1, 7},
                                           PngCase{"Flat", 9, 1}, PngCase{"OddSides", 37, 23},
                                           PngCase{"FullFrame", 1920, 1080}));

TEST_F(PictureWriters, PngPixelBytesAreRedGreenBlueAlpha) {
    Frame frame{2, 1, {0x10, 0x20, 0x30, 0x40, 0x01, 0x02, 0x03, 0xFF}};
    PictureGenerator generator(frame.data());
    ASSERT_EQ(generator.generatePNG(m_dir.c_str(), "pixel.png"), 0);
    EXPECT_EQ(decodePng(file("pixel.png")).pixels,
              (std::vector<uint8_t>{0x30, 0x20, 0x10, 0x40, 0x03, 0x02, 0x01, 0xFF}));
}

TEST_F(PictureWriters, PngLogsItsStartAndTheBitMap) {
    Frame frame = Frame::numbered(3, 2);
    PictureGenerator generator(frame.data());
    ASSERT_EQ(generator.generatePNG(m_dir.c_str(), "shot.png"), 0);
    EXPECT_EQ(messages(), (std::vector<std::pair<uint16_t, std::string>>{
                              {5000, "In generatePng :" + m_dir + " shot.png.\n"},
                              {5000, "m_bitMap: height:2 width:3 bit_depth 8 flag: 1 \n"}}));
}

TEST_F(PictureWriters, PngReplacesAnExistingFileAndKeepsCreationPermissions) {
    put(file("shot.png"), "an older capture, much longer than nothing");
    Frame frame = Frame::numbered(4, 4);
    PictureGenerator generator(frame.data());
    const mode_t old = umask(027);
    const int status = generator.generatePNG(m_dir.c_str(), "shot.png");
    umask(old);
    ASSERT_EQ(status, 0);
    EXPECT_TRUE(decodePng(file("shot.png")).ok);
    EXPECT_EQ(fileMode(file("shot.png")), 0640);
}

TEST_F(PictureWriters, PngIntoAMissingDirectoryCannotOpenTheFile) {
    Frame frame = Frame::numbered(2, 2);
    PictureGenerator generator(frame.data());
    EXPECT_EQ(generator.generatePNG((m_dir + "/missing").c_str(), "shot.png"), -1);
    EXPECT_EQ(messages().back(),
              std::make_pair(uint16_t{3000}, std::string("Error: can't open the file.\n")));
}

TEST_F(PictureWriters, PngWithAZeroSideFailsInTheHeaderStageAndLeavesTheTemporaryFile) {
    for (const auto& sides : {std::make_pair(0u, 4u), std::make_pair(4u, 0u)}) {
        clearLogs();
        std::filesystem::remove(file("temp.png"));
        Frame frame{sides.first, sides.second, std::vector<uint8_t>(16)};
        PictureGenerator generator(frame.data());
        EXPECT_EQ(generator.generatePNG(m_dir.c_str(), "shot.png"), -1);
        EXPECT_EQ(texts().back(), "Error:failed png_create_write_struct.\n");
        EXPECT_TRUE(fileExists(file("temp.png")));
        EXPECT_FALSE(fileExists(file("shot.png")));
    }
}

TEST_F(PictureWriters, PngRenameFailureLogsTheFinalNameAndKeepsTheTemporaryFile) {
    // A directory with something in it cannot be replaced by a file.
    std::filesystem::create_directories(file("shot.png") + "/inside");
    Frame frame = Frame::numbered(3, 3);
    PictureGenerator generator(frame.data());
    EXPECT_EQ(generator.generatePNG(m_dir.c_str(), "shot.png"), -1);
    EXPECT_EQ(
        messages().back(),
        std::make_pair(uint16_t{3000}, "generatePNG path: " + file("shot.png") + " Failed\n"));
    EXPECT_TRUE(pngcheckAccepts(file("temp.png")));
}

TEST_F(PictureWriters, PngKeepsATrailingSlashOfTheDirectory) {
    Frame frame = Frame::numbered(2, 2);
    PictureGenerator generator(frame.data());
    ASSERT_EQ(generator.generatePNG((m_dir + "/").c_str(), "shot.png"), 0);
    EXPECT_EQ(texts().front(), "In generatePng :" + m_dir + "/ shot.png.\n");
    EXPECT_TRUE(decodePng(file("shot.png")).ok);
}

// A write error while the image goes out (here: a full device behind the temporary name) leaves
// through the image stage, which prints to standard output and leaves its row array allocated.
// Run in a child that leaves with _exit, so that a leak checker does not count that array.
TEST_F(PictureWriters, PngWriteErrorPrintsSetJmpOnStandardOutput) {
    if (access("/dev/full", W_OK) != 0) {
        GTEST_SKIP() << "no /dev/full";
    }
    ASSERT_EQ(symlink("/dev/full", file("temp.png").c_str()), 0);
    const std::string printed = m_root + "/stdout.txt";
    EXPECT_EXIT(
        {
            fflush(stdout);
            const int out = open(printed.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
            dup2(out, STDOUT_FILENO);
            Frame frame = Frame::numbered(256, 256);
            PictureGenerator generator(frame.data());
            const int status = generator.generatePNG(m_dir.c_str(), "shot.png");
            fflush(stdout);
            bool loggedError = false;
            for (const auto& message : messages()) {
                loggedError = loggedError || message.first != 5000;
            }
            const std::vector<uint8_t> text = readBytes(printed);
            const bool ok = status == -1 && !loggedError &&
                            std::string(text.begin(), text.end()) == "Error: set jmp\n" &&
                            !fileExists(file("shot.png"));
            _exit(ok ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

// --- BMP ---

struct BmpCase {
    uint32_t width;
    uint32_t height;
    uint32_t padding;
};

void PrintTo(const BmpCase& c, std::ostream* os) {
    *os << c.width << "x" << c.height;
}

class BmpWriter : public PictureWriters, public ::testing::WithParamInterface<BmpCase> {};

TEST_P(BmpWriter, HeadersRowsBottomUpAndPadding) {
    const BmpCase& c = GetParam();
    Frame frame = Frame::numbered(c.width, c.height);
    PictureGenerator generator(frame.data());
    ASSERT_EQ(generator.generateBmp(m_dir.c_str(), "shot.bmp"), 0);

    const std::vector<uint8_t> bytes = readBytes(file("shot.bmp"));
    const size_t rowBytes = c.width * 3 + c.padding;
    ASSERT_EQ(bytes.size(), 54 + rowBytes * c.height);
    // File header.
    EXPECT_EQ(bytes[0], 0x42);
    EXPECT_EQ(bytes[1], 0x4D);
    EXPECT_EQ(le32(bytes, 2), c.width * c.height * 3 + 54) << "the size leaves out the padding";
    EXPECT_EQ(le16(bytes, 6), 0);
    EXPECT_EQ(le16(bytes, 8), 0);
    EXPECT_EQ(le32(bytes, 10), 54u);
    // Information header.
    EXPECT_EQ(le32(bytes, 14), 40u);
    EXPECT_EQ(le32(bytes, 18), c.width);
    EXPECT_EQ(le32(bytes, 22), c.height);
    EXPECT_EQ(le16(bytes, 26), 1);
    EXPECT_EQ(le16(bytes, 28), 24);
    for (size_t at = 30; at < 54; at += 4) {
        EXPECT_EQ(le32(bytes, at), 0u) << "field at offset " << at;
    }
    // Rows: the picture's bottom row first, blue-green-red, then zero padding.
    for (uint32_t row = 0; row < c.height; ++row) {
        const uint32_t y = c.height - 1 - row;
        const size_t start = 54 + row * rowBytes;
        for (uint32_t x = 0; x < c.width; ++x) {
            const uint8_t* source = &frame.pixels[(size_t{y} * c.width + x) * 4];
            const size_t at = start + x * 3;
            EXPECT_EQ(bytes[at], source[0]) << "row " << row << " pixel " << x;
            EXPECT_EQ(bytes[at + 1], source[1]) << "row " << row << " pixel " << x;
            EXPECT_EQ(bytes[at + 2], source[2]) << "row " << row << " pixel " << x;
        }
        for (uint32_t p = 0; p < c.padding; ++p) {
            EXPECT_EQ(bytes[start + c.width * 3 + p], 0) << "row " << row << " padding " << p;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Widths, BmpWriter,
                         ::testing::Values(BmpCase{1, 1, 1}, BmpCase{1, 3, 1}, BmpCase{2, 3, 2},
                                           BmpCase{3, 3, 3}, BmpCase{4, 3, 0}, BmpCase{5, 2, 1},
                                           BmpCase{7, 5, 3}, BmpCase{1920, 1080, 0},
                                           BmpCase{1366, 768, 2}));

TEST_F(PictureWriters, BmpOfOnePixelIs58BytesWithSizeField57) {
    Frame frame{1, 1, {0x10, 0x20, 0x30, 0x40}};
    PictureGenerator generator(frame.data());
    ASSERT_EQ(generator.generateBmp(m_dir.c_str(), "one.bmp"), 0);
    const std::vector<uint8_t> bytes = readBytes(file("one.bmp"));
    ASSERT_EQ(bytes.size(), 58u);
    EXPECT_EQ(le32(bytes, 2), 57u);
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin() + 54, bytes.end()),
              (std::vector<uint8_t>{0x10, 0x20, 0x30, 0x00}));
}

TEST_F(PictureWriters, BmpLogsEachStepAndTruncatesAnExistingFile) {
    put(file("shot.bmp"), std::string(5000, 'x'));
    Frame frame = Frame::numbered(4, 2);
    PictureGenerator generator(frame.data());
    ASSERT_EQ(generator.generateBmp(m_dir.c_str(), "shot.bmp"), 0);
    EXPECT_EQ(readBytes(file("shot.bmp")).size(), 54u + 24);
    EXPECT_EQ(messages(),
              (std::vector<std::pair<uint16_t, std::string>>{
                  {5000, "In generateBmp :" + m_dir + " shot.bmp. " + file("shot.bmp") + "\n"},
                  {5000, "m_bitMap: height:2 width:4 bit_depth 8 flag: 1 \n"},
                  {5000, "BMP generating started\n"},
                  {5000, "Writing BMP to file system\n"},
                  {5000, "Flushing BMP to file system\n"},
                  {5000, "BMP generating finished\n"}}));
}

// --- raw ---

TEST_F(PictureWriters, RawIsTheBufferUnchangedWithMode0644) {
    Frame frame = Frame::numbered(6, 5);
    put(file("shot.raw"), std::string(1000, 'x'));
    chmod(file("shot.raw").c_str(), 0600);
    PictureGenerator generator(frame.data());
    const mode_t old = umask(077);
    const int status = generator.generateRaw(m_dir.c_str(), "shot.raw");
    umask(old);
    ASSERT_EQ(status, 0);
    EXPECT_EQ(readBytes(file("shot.raw")), frame.pixels);
    EXPECT_EQ(fileMode(file("shot.raw")), 0644);
}

struct RawLogCase {
    const char* name;
    uint32_t width;
    uint32_t height;
    const char* flushLine;
};

void PrintTo(const RawLogCase& c, std::ostream* os) {
    *os << c.name;
}

class RawFlushLine : public PictureWriters, public ::testing::WithParamInterface<RawLogCase> {};

// The block count (rows written) is compared with the row length in bytes.
TEST_P(RawFlushLine, DependsOnBlocksAgainstRowLength) {
    const RawLogCase& c = GetParam();
    Frame frame{c.width, c.height, std::vector<uint8_t>(size_t{c.width} * c.height * 4 + 4, 7)};
    PictureGenerator generator(frame.data());
    ASSERT_EQ(generator.generateRaw(m_dir.c_str(), "shot.raw"), 0);
    EXPECT_EQ(readBytes(file("shot.raw")).size(), size_t{c.width} * c.height * 4);
    EXPECT_EQ(fileMode(file("shot.raw")), 0644);
    EXPECT_EQ(messages(),
              (std::vector<std::pair<uint16_t, std::string>>{
                  {5000, "m_bitMap: height:" + std::to_string(c.height) +
                             " width:" + std::to_string(c.width * 4) + " bit_depth 8 flag: 1 \n"},
                  {5000, "In generateRaw :" + m_dir + " shot.raw. " + file("shot.raw") + "\n"},
                  {5000, c.flushLine}}));
}

INSTANTIATE_TEST_SUITE_P(
    Frames, RawFlushLine,
    ::testing::Values(RawLogCase{"RowsEqualRowBytes", 1, 4, "Flushing RAW to file system \n"},
                      RawLogCase{"RowsDiffer", 3, 2, "Flushing RAW to file system  SIZE = 2\n"},
                      RawLogCase{"FullHd", 1920, 1080,
                                 "Flushing RAW to file system  SIZE = 1080\n"}));

// --- every writer: bad directories and empty frames ---

struct FailureCase {
    const char* name;
    const char* logLine;
};

void PrintTo(const FailureCase& c, std::ostream* os) {
    *os << c.name;
}

class WriterFailure : public PictureWriters, public ::testing::WithParamInterface<FailureCase> {};

TEST_P(WriterFailure, MissingDirectoryOrAFileInItsPlace) {
    put(file("plain"), "not a directory");
    for (const std::string& dir : {m_dir + "/missing", m_dir + "/plain"}) {
        clearLogs();
        Frame frame = Frame::numbered(3, 2);
        PictureGenerator generator(frame.data());
        EXPECT_EQ(generator.generate(dir, GetParam().name), -1) << dir;
        EXPECT_EQ(messages().back(),
                  std::make_pair(uint16_t{3000}, std::string(GetParam().logLine)))
            << dir;
    }
}

INSTANTIATE_TEST_SUITE_P(Writers, WriterFailure,
                         ::testing::Values(FailureCase{"shot.png", "Error: can't open the file.\n"},
                                           FailureCase{"shot.bmp", "Failed to open BMP file\n"},
                                           FailureCase{"shot.raw", "Failed to open RAW file\n"}));

TEST_F(PictureWriters, UnwritableDirectoryFailsEveryWriter) {
    if (geteuid() == 0) {
        GTEST_SKIP() << "permission bits do not stop root";
    }
    const std::string locked = m_dir + "/locked";
    std::filesystem::create_directories(locked);
    chmod(locked.c_str(), 0555);
    Frame frame = Frame::numbered(3, 2);
    PictureGenerator generator(frame.data());
    for (const char* name : {"shot.png", "shot.bmp", "shot.raw"}) {
        EXPECT_EQ(generator.generate(locked, name), -1) << name;
    }
    chmod(locked.c_str(), 0755);
}

TEST_F(PictureWriters, EmptyFramesGiveAValidBmpAnEmptyRawAndNoPng) {
    for (const auto& sides : {std::make_pair(0u, 3u), std::make_pair(3u, 0u)}) {
        Frame frame{sides.first, sides.second, std::vector<uint8_t>(36, 9)};
        PictureGenerator generator(frame.data());

        ASSERT_EQ(generator.generate(m_dir, "empty.bmp"), 0);
        const std::vector<uint8_t> bmp = readBytes(file("empty.bmp"));
        ASSERT_EQ(bmp.size(), 54u);
        EXPECT_EQ(le32(bmp, 2), 54u);
        EXPECT_EQ(le32(bmp, 18), sides.first);
        EXPECT_EQ(le32(bmp, 22), sides.second);

        ASSERT_EQ(generator.generate(m_dir, "empty.raw"), 0);
        EXPECT_TRUE(readBytes(file("empty.raw")).empty());
        EXPECT_EQ(fileMode(file("empty.raw")), 0644);

        EXPECT_EQ(generator.generate(m_dir, "empty.png"), -1);
        EXPECT_FALSE(fileExists(file("empty.png")));
    }
}

TEST_F(PictureWriters, WithoutAFrameNothingIsRead) {
    PictureGenerator generator;
    EXPECT_EQ(generator.generate(m_dir, "none.bmp"), 0);
    EXPECT_EQ(readBytes(file("none.bmp")).size(), 54u);
    EXPECT_EQ(generator.generate(m_dir, "none.raw"), 0);
    EXPECT_TRUE(readBytes(file("none.raw")).empty());
    EXPECT_EQ(generator.generate(m_dir, "none.png"), -1);
}

// --- permission change ---

TEST_F(PictureWriters, ChangePictureModeReportsAMissingFile) {
    PictureGenerator generator;
    EXPECT_EQ(generator.changePictureMode(file("nothing.raw").c_str(), 0644), -1);
    EXPECT_EQ(messages(), (std::vector<std::pair<uint16_t, std::string>>{
                              {3000, "Access file: " + file("nothing.raw") +
                                         ", error: No such file or directory\n"}}));
}

TEST_F(PictureWriters, ChangePictureModeReportsARefusal) {
    // The kernel refuses mode changes of /proc files, even to root.
    PictureGenerator generator;
    EXPECT_EQ(generator.changePictureMode("/proc/self/status", 0644), -1);
    EXPECT_EQ(
        messages(),
        (std::vector<std::pair<uint16_t, std::string>>{
            {3000,
             "Change file: /proc/self/status, mode: 0644, error: Operation not permitted\n"}}));
}

}  // namespace
}  // namespace sysctrltest
