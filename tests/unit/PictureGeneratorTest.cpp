// The picture writers: the format chosen by name, the PNG, BMP and raw files byte by byte, and
// their failure paths.
#include "picturegenerator.h"

#include <unistd.h>

#include <filesystem>
#include <random>
#include <tuple>

#include "PictureFiles.h"
#include "ServiceTest.h"

namespace sysctrltest {
namespace {

using sysctrlservice::PictureGenerator;
typedef std::vector<std::pair<uint16_t, std::string>> Messages;

// A frame as the capture port leaves it: blue, green, red, alpha per pixel, top row first.
struct Frame {
    uint32_t width;
    uint32_t height;
    Bytes pixels;

    // Pseudo-random bytes, so that every pixel and every row differs and the compressed image
    // is about as large as the frame.
    static Frame numbered(uint32_t width, uint32_t height) {
        Frame frame{width, height, Bytes(size_t{width} * height * 4)};
        std::mt19937 random(width * 31 + height);
        for (uint8_t& byte : frame.pixels) {
            byte = static_cast<uint8_t>(random() >> 24);
        }
        return frame;
    }

    boost::shared_ptr<zo::port::screenCaptureData> data() {
        return boost::shared_ptr<zo::port::screenCaptureData>(
            new zo::port::screenCaptureData{pixels.data(), 0, width, height});
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

    std::string m_dir;
};

TEST_F(PictureWriters, ConstructorsFillTheBitMapOnlyFromAFilledRecord) {
    const auto fields = [](const PictureGenerator& generator) {
        const sysctrlservice::BitMap& m = generator.bitMap();
        return std::make_tuple(m.width, m.height, m.bit_depth, m.flag, (void*)m.buffer);
    };
    const auto empty = std::make_tuple(0, 0, 0, 0, (void*)nullptr);
    Frame frame = Frame::numbered(3, 2);
    EXPECT_EQ(fields(PictureGenerator(frame.data())),
              std::make_tuple(3, 2, 8, 1, (void*)frame.pixels.data()));
    EXPECT_EQ(fields(PictureGenerator()), empty);
    EXPECT_EQ(fields(PictureGenerator(boost::shared_ptr<zo::port::screenCaptureData>())), empty);
    const boost::shared_ptr<zo::port::screenCaptureData> noBuffer = frame.data();
    noBuffer->buffer = nullptr;
    EXPECT_EQ(fields(PictureGenerator(noBuffer)), empty);
}

// The name's last four characters choose the writer, case-sensitively.
TEST_F(PictureWriters, NameChoosesTheWriter) {
    const struct {
        const char* name;
        char format;
    } cases[] = {{"shot.raw", 'r'},    {".raw", 'r'},     {"shot.bmp", 'b'}, {".bmp", 'b'},
                 {"shot.png", 'p'},    {"shot.jpg", 'p'}, {"shot", 'p'},     {"a.RAW", 'p'},
                 {"x.BMP", 'p'},       {"shot.PNG", 'p'}, {"raw", 'p'},      {"ab", 'p'},
                 {"shot.raw.png", 'p'}};
    Frame frame = Frame::numbered(5, 3);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(PictureGenerator(frame.data()).generate(m_dir, c.name), 0);
        const Bytes bytes = readBytes(file(c.name));
        EXPECT_EQ(bytes == frame.pixels, c.format == 'r');
        EXPECT_EQ(bytes.size() == 54 + 15 * 3 + 3 * 1 && bytes[0] == 'B' && bytes[1] == 'M',
                  c.format == 'b');
        EXPECT_EQ(decodePng(file(c.name)).pixels == toRgba(frame.pixels), c.format == 'p');
    }
}

// The file replaces an older one, keeps the mode file creation gives and leaves no temporary. The
// directory is used as given, trailing slash and all.
TEST_F(PictureWriters, PngOfAFullFrameDecodesToItsPixels) {
    std::ofstream(file("shot.png")) << "an older capture";
    Frame frame = Frame::numbered(1920, 1080);
    const Bytes before = frame.pixels;
    const mode_t old = umask(027);
    const int status =
        PictureGenerator(frame.data()).generatePNG((m_dir + "/").c_str(), "shot.png");
    umask(old);
    ASSERT_EQ(status, 0);
    EXPECT_EQ(messages(),
              (Messages{{5000, "In generatePng :" + m_dir + "/ shot.png.\n"},
                        {5000, "m_bitMap: height:1080 width:1920 bit_depth 8 flag: 1 \n"}}));
    const DecodedPng png = decodePng(file("shot.png"));
    EXPECT_EQ(std::make_pair(png.width, png.height), std::make_pair(1920u, 1080u));
    // 8 bits, RGBA, default compression and filter, no interlacing.
    EXPECT_EQ(png.header, (Bytes{8, PNG_COLOR_TYPE_RGBA, 0, 0, 0}));
    EXPECT_TRUE(png.pixels == toRgba(before)) << "decoded pixels differ from the frame";
    EXPECT_TRUE(frame.pixels == before) << "the writer changed the capture buffer";
    EXPECT_TRUE(pngcheckAccepts(file("shot.png")));
    EXPECT_EQ(fileMode(file("shot.png")), 0640);
    EXPECT_EQ(fileMode(file("temp.png")), -1);
}

TEST_F(PictureWriters, PngRenameFailureLogsTheFinalNameAndKeepsTheTemporaryFile) {
    // A directory with something in it cannot be replaced by a file.
    std::filesystem::create_directories(file("shot.png") + "/inside");
    Frame frame = Frame::numbered(3, 3);
    EXPECT_EQ(PictureGenerator(frame.data()).generatePNG(m_dir.c_str(), "shot.png"), -1);
    EXPECT_EQ(
        messages().back(),
        std::make_pair(uint16_t{3000}, "generatePNG path: " + file("shot.png") + " Failed\n"));
    EXPECT_TRUE(pngcheckAccepts(file("temp.png")));
}

// A write error while the image goes out (a full device behind the temporary name) leaves through
// the image stage: "Error: set jmp" on standard output, nothing more in the log. In a child that
// leaves with _exit, so that a leak checker does not count the row array that stage leaves.
TEST_F(PictureWriters, PngWriteErrorPrintsSetJmpOnStandardOutput) {
    if (access("/dev/full", W_OK) != 0) {
        GTEST_SKIP() << "no /dev/full";
    }
    ASSERT_EQ(symlink("/dev/full", file("temp.png").c_str()), 0);
    EXPECT_EXIT(
        {
            // The death test reads standard error: standard output goes there, libpng's own
            // complaint does not.
            dup2(STDERR_FILENO, STDOUT_FILENO);
            if (freopen("/dev/null", "w", stderr) == nullptr) {
                _exit(2);
            }
            Frame frame = Frame::numbered(256, 256);
            const int status =
                PictureGenerator(frame.data()).generatePNG(m_dir.c_str(), "shot.png");
            fflush(stdout);
            _exit(status == -1 && messages().size() == 2 && fileMode(file("shot.png")) == -1 ? 0
                                                                                             : 1);
        },
        ::testing::ExitedWithCode(0), "^Error: set jmp\n$");
}

// Rows bottom first, blue-green-red, each padded with zeros to a multiple of four bytes; the size
// field leaves the padding out. 1366 x 768 takes several conversion bands, the last one partial.
// An older, longer file is cut to the new one.
TEST_F(PictureWriters, BmpHeadersRowsAndPadding) {
    const struct {
        uint32_t width, height, padding;
    } cases[] = {{1, 1, 1}, {1, 3, 1}, {2, 3, 2}, {3, 3, 3}, {4, 3, 0}, {7, 5, 3}, {1366, 768, 2}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.width) + "x" + std::to_string(c.height));
        std::ofstream(file("shot.bmp")) << std::string(100000, 'x');
        clearLogs();
        Frame frame = Frame::numbered(c.width, c.height);
        ASSERT_EQ(PictureGenerator(frame.data()).generateBmp(m_dir.c_str(), "shot.bmp"), 0);
        const std::string size = std::to_string(c.height) + " width:" + std::to_string(c.width);
        EXPECT_EQ(
            messages(),
            (Messages{{5000, "In generateBmp :" + m_dir + " shot.bmp. " + file("shot.bmp") + "\n"},
                      {5000, "m_bitMap: height:" + size + " bit_depth 8 flag: 1 \n"},
                      {5000, "BMP generating started\n"},
                      {5000, "Writing BMP to file system\n"},
                      {5000, "Flushing BMP to file system\n"},
                      {5000, "BMP generating finished\n"}}));
        const Bytes bytes = readBytes(file("shot.bmp"));
        ASSERT_GE(bytes.size(), 54u);
        std::vector<uint32_t> fields;  // the words after "BM" (checked by NameChoosesTheWriter)
        for (size_t at = 2; at < 54; at += 4) {
            fields.push_back(le32(bytes, at));
        }
        EXPECT_EQ(fields, (std::vector<uint32_t>{c.width * c.height * 3 + 54, 0, 54, 40, c.width,
                                                 c.height, 1 | 24 << 16, 0, 0, 0, 0, 0, 0}));
        Bytes rows;
        for (uint32_t y = c.height; y-- > 0;) {
            for (uint32_t x = 0; x < c.width; ++x) {
                const uint8_t* source = &frame.pixels[(size_t{y} * c.width + x) * 4];
                rows.insert(rows.end(), source, source + 3);
            }
            rows.resize(rows.size() + c.padding, 0);
        }
        EXPECT_TRUE(Bytes(bytes.begin() + 54, bytes.end()) == rows);
    }
}

// The buffer unchanged, top row first, replacing an older file, with mode 0644 whatever the
// umask. The bit map line gives the row length in bytes as the width; the flush line compares
// the rows written with that length.
TEST_F(PictureWriters, RawIsTheBufferUnchanged) {
    const struct {
        uint32_t width, height;
        const char *bitMapLine, *flushLine;
    } cases[] = {{1, 4, "m_bitMap: height:4 width:4 bit_depth 8 flag: 1 \n",
                  "Flushing RAW to file system \n"},
                 {3, 2, "m_bitMap: height:2 width:12 bit_depth 8 flag: 1 \n",
                  "Flushing RAW to file system  SIZE = 2\n"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.flushLine);
        clearLogs();
        std::ofstream(file("shot.raw")) << std::string(1000, 'x');
        chmod(file("shot.raw").c_str(), 0600);
        Frame frame = Frame::numbered(c.width, c.height);
        const mode_t old = umask(077);
        const int status = PictureGenerator(frame.data()).generateRaw(m_dir.c_str(), "shot.raw");
        umask(old);
        ASSERT_EQ(status, 0);
        EXPECT_TRUE(readBytes(file("shot.raw")) == frame.pixels);
        EXPECT_EQ(fileMode(file("shot.raw")), 0644);
        EXPECT_EQ(
            messages(),
            (Messages{{5000, c.bitMapLine},
                      {5000, "In generateRaw :" + m_dir + " shot.raw. " + file("shot.raw") + "\n"},
                      {5000, c.flushLine}}));
    }
}

TEST_F(PictureWriters, MissingDirectoryOrAFileInItsPlaceFailsEveryWriter) {
    std::ofstream(file("plain")) << "not a directory";
    const std::pair<const char*, const char*> cases[] = {
        {"shot.png", "Error: can't open the file.\n"},
        {"shot.bmp", "Failed to open BMP file\n"},
        {"shot.raw", "Failed to open RAW file\n"}};
    Frame frame = Frame::numbered(3, 2);
    for (const auto& c : cases) {
        for (const std::string& dir : {m_dir + "/missing", m_dir + "/plain"}) {
            SCOPED_TRACE(dir + " " + c.first);
            clearLogs();
            EXPECT_EQ(PictureGenerator(frame.data()).generate(dir, c.first), -1);
            EXPECT_EQ(messages().back(), std::make_pair(uint16_t{3000}, std::string(c.second)));
        }
    }
}

// An empty frame: a BMP of headers only, an empty raw file, and no PNG: libpng refuses a zero
// side in the header stage, which logs the creation text again and leaves the temporary file.
TEST_F(PictureWriters, EmptyFrameGivesAHeaderOnlyBmpAnEmptyRawAndNoPng) {
    Frame frame{3, 0, Bytes(36, 9)};
    PictureGenerator generator(frame.data());
    ASSERT_EQ(generator.generate(m_dir, "empty.bmp"), 0);
    const Bytes bmp = readBytes(file("empty.bmp"));
    ASSERT_EQ(bmp.size(), 54u);
    EXPECT_EQ(std::make_tuple(le32(bmp, 2), le32(bmp, 18), le32(bmp, 22)),
              std::make_tuple(54u, 3u, 0u));
    ASSERT_EQ(generator.generate(m_dir, "empty.raw"), 0);
    EXPECT_TRUE(readBytes(file("empty.raw")).empty());
    EXPECT_EQ(fileMode(file("empty.raw")), 0644);
    EXPECT_EQ(generator.generate(m_dir, "empty.png"), -1);
    EXPECT_EQ(messages().back().second, "Error:failed png_create_write_struct.\n");
    EXPECT_EQ(fileMode(file("empty.png")), -1);
    EXPECT_NE(fileMode(file("temp.png")), -1);
}

TEST_F(PictureWriters, ChangePictureModeReportsAMissingFileAndARefusal) {
    PictureGenerator generator;
    EXPECT_EQ(generator.changePictureMode(file("nothing.raw").c_str(), 0644), -1);
    // The kernel refuses mode changes of /proc files, even to root.
    EXPECT_EQ(generator.changePictureMode("/proc/self/status", 0644), -1);
    EXPECT_EQ(messages(), (Messages{{3000, "Access file: " + file("nothing.raw") +
                                               ", error: No such file or directory\n"},
                                    {3000,
                                     "Change file: /proc/self/status, mode: 0644, error: Operation "
                                     "not permitted\n"}}));
}

}  // namespace
}  // namespace sysctrltest
