// Writing a 1920x1080 capture as raw, BMP and PNG, against libpng with its default settings.
//
// Two synthetic frames: a UI-like one (flat panels, gradients, rows of small glyphs, opaque) and a
// natural-image one (smooth colour fields with mild noise, opaque). Every write goes to a fresh
// file (the old one is unlinked first, outside the timed region), so that the file system's
// write-back of an earlier run does not land in a later one. The benchmarks run in registration
// order; each frame's reference runs before the writers that are compared with it.
//
// Counters: `speedup` = reference time / writer time, `size_ratio` = file size / reference file
// size (PNG writers); `vs_raw` = BMP time / raw time of the same frame. They use the median
// iteration of each benchmark, in wall-clock time; `cpu_speedup` and `cpu_vs_raw` are the same
// ratios in the thread's processor time, which other processes on a busy machine disturb less.
// `bytes` is the file's size.
#include <png.h>
#include <stdio.h>
#include <unistd.h>

#include <benchmark/benchmark.h>

#include <sys/stat.h>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <map>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "picturegenerator.h"
#include "zo/host/Host.h"
#include "zo/port/ScreenCapture.h"

namespace {

const int kWidth = 1920;
const int kHeight = 1080;

// A small xorshift generator: the frames are the same on every run.
struct Random {
    uint32_t state;
    uint32_t next() {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        return state;
    }
};

struct Frame {
    std::vector<uint8_t> pixels;  // blue, green, red, alpha; top row first
    void put(int x, int y, uint8_t blue, uint8_t green, uint8_t red) {
        uint8_t* pixel = &pixels[(static_cast<size_t>(y) * kWidth + x) * 4];
        pixel[0] = blue;
        pixel[1] = green;
        pixel[2] = red;
        pixel[3] = 0xFF;
    }
};

// A menu on the left, a header gradient, twelve cards with horizontal gradients, and lines of
// 5x7 glyphs drawn from 52 random bitmaps, as a settings or store page looks.
Frame uiFrame() {
    Frame frame{std::vector<uint8_t>(static_cast<size_t>(kWidth) * kHeight * 4)};
    Random random{12345};
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            if (y < 80) {
                frame.put(x, y, static_cast<uint8_t>(60 + y), static_cast<uint8_t>(30 + y / 2), 20);
            } else if (x < 320) {
                frame.put(x, y, 40, 40, 48);
            } else {
                frame.put(x, y, 235, 235, 240);
            }
        }
    }
    for (int card = 0; card < 12; ++card) {
        const int x0 = 360 + (card % 4) * 390;
        const int y0 = 140 + (card / 4) * 300;
        for (int y = y0; y < y0 + 260; ++y) {
            for (int x = x0; x < x0 + 360; ++x) {
                frame.put(x, y, static_cast<uint8_t>(200 - (x - x0) / 4),
                          static_cast<uint8_t>(120 + card * 8),
                          static_cast<uint8_t>(40 + (x - x0) / 3));
            }
        }
    }
    uint64_t glyphs[52];
    for (uint64_t& glyph : glyphs) {
        glyph = (static_cast<uint64_t>(random.next()) << 32) | random.next();
    }
    const auto text = [&](int x0, int y0, int count, uint8_t level) {
        for (int i = 0; i < count; ++i) {
            const uint32_t kind = random.next() % 53;
            if (kind == 52) {
                continue;  // a blank
            }
            for (int gy = 0; gy < 7; ++gy) {
                for (int gx = 0; gx < 5; ++gx) {
                    if (((glyphs[kind] >> (gy * 5 + gx)) & 1) != 0) {
                        frame.put(x0 + i * 7 + gx, y0 + gy, level, level, level);
                    }
                }
            }
        }
    };
    text(40, 30, 120, 255);
    for (int line = 0; line < 60; ++line) {
        text(16, 100 + line * 16, 40, 220);
    }
    for (int card = 0; card < 12; ++card) {
        for (int line = 0; line < 10; ++line) {
            text(360 + (card % 4) * 390 + 10, 140 + (card / 4) * 300 + 100 + line * 14, 48, 255);
        }
    }
    return frame;
}

// Low-frequency colour fields per channel with noise of -3..3, as a photograph or a film frame.
Frame naturalFrame() {
    Frame frame{std::vector<uint8_t>(static_cast<size_t>(kWidth) * kHeight * 4)};
    Random random{987654321};
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const double u = static_cast<double>(x) / kWidth;
            const double v = static_cast<double>(y) / kHeight;
            const double base[3] = {
                110 + 60 * std::sin(6.1 * u + 1.3 * v) + 30 * std::cos(9.7 * v - 3.1 * u),
                120 + 50 * std::sin(4.3 * v + 2.0) + 35 * std::sin(11.0 * u * v + 0.5),
                100 + 70 * std::cos(5.2 * u - 2.7 * v) + 20 * std::sin(17.0 * v)};
            uint8_t channel[3];
            for (int c = 0; c < 3; ++c) {
                const double value = base[c] + static_cast<int>(random.next() % 7) - 3;
                channel[c] = static_cast<uint8_t>(std::min(255.0, std::max(0.0, value)));
            }
            frame.put(x, y, channel[0], channel[1], channel[2]);
        }
    }
    return frame;
}

const Frame& frameNamed(const std::string& name) {
    static const Frame ui = uiFrame();
    static const Frame natural = naturalFrame();
    return name == "ui" ? ui : natural;
}

// libpng as it comes: default compression level, strategy and row filters; the same byte
// reordering into one converted copy as the service's writer.
int writeReferencePng(const Frame& frame, const char* fileName) {
    FILE* file = fopen(fileName, "wb");
    if (file == nullptr) {
        return -1;
    }
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    std::vector<uint8_t> converted(frame.pixels.size());
    std::vector<png_bytep> rows(kHeight);
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        fclose(file);
        return -1;
    }
    png_init_io(png, file);
    png_set_IHDR(png, info, kWidth, kHeight, 8, PNG_COLOR_TYPE_RGBA, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    for (size_t i = 0; i < frame.pixels.size(); i += 4) {
        converted[i] = frame.pixels[i + 2];
        converted[i + 1] = frame.pixels[i + 1];
        converted[i + 2] = frame.pixels[i];
        converted[i + 3] = frame.pixels[i + 3];
    }
    for (int y = 0; y < kHeight; ++y) {
        rows[y] = &converted[static_cast<size_t>(y) * kWidth * 4];
    }
    png_write_image(png, rows.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return fclose(file) == 0 ? 0 : -1;
}

std::string benchDirectory() {
    static const std::string directory = [] {
        const char* base = std::getenv("SYSCTRL_BENCH_DIR");
        std::string pattern =
            std::string(base != nullptr ? base : "/tmp") + "/sysctrl-bench.XXXXXX";
        if (mkdtemp(&pattern[0]) == nullptr) {
            return std::string();
        }
        return pattern;
    }();
    return directory;
}

long fileSize(const std::string& fileName) {
    struct stat info;
    return stat(fileName.c_str(), &info) == 0 ? static_cast<long>(info.st_size) : -1;
}

double threadSeconds() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// Median iteration times (wall clock and processor, seconds) and file size of each benchmark, by
// frame and writer.
struct Result {
    double seconds;
    double cpuSeconds;
    long bytes;
};
std::map<std::string, Result>& results() {
    static std::map<std::string, Result> kept;
    return kept;
}

enum class Writer { Raw, Bmp, Png, ReferencePng };

const char* extensionOf(Writer writer) {
    switch (writer) {
        case Writer::Raw:
            return ".raw";
        case Writer::Bmp:
            return ".bmp";
        default:
            return ".png";
    }
}

void BM_Write(benchmark::State& state, const std::string& frameName, Writer writer,
              const std::string& key) {
    const Frame& frame = frameNamed(frameName);
    const std::string directory = benchDirectory();
    if (directory.empty()) {
        state.SkipWithError("no directory for the files");
        return;
    }
    const std::string name = "capture-" + key + extensionOf(writer);
    const std::string fileName = directory + "/" + name;

    boost::shared_ptr<zo::port::screenCaptureData> data(new zo::port::screenCaptureData());
    data->buffer = const_cast<uint8_t*>(frame.pixels.data());
    data->width = kWidth;
    data->height = kHeight;
    data->stride = kWidth * 4;
    sysctrlservice::PictureGenerator generator(data);

    std::vector<double> times;
    std::vector<double> cpuTimes;
    for (auto _ : state) {
        unlink(fileName.c_str());
        unlink((directory + "/temp.png").c_str());
        const double cpuStart = threadSeconds();
        const auto start = std::chrono::steady_clock::now();
        int status = -1;
        switch (writer) {
            case Writer::Raw:
                status = generator.generateRaw(directory.c_str(), name.c_str());
                break;
            case Writer::Bmp:
                status = generator.generateBmp(directory.c_str(), name.c_str());
                break;
            case Writer::Png:
                status = generator.generatePNG(directory.c_str(), name.c_str());
                break;
            case Writer::ReferencePng:
                status = writeReferencePng(frame, fileName.c_str());
                break;
        }
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        cpuTimes.push_back(threadSeconds() - cpuStart);
        state.SetIterationTime(elapsed.count());
        times.push_back(elapsed.count());
        if (status != 0) {
            state.SkipWithError("the writer failed");
            return;
        }
    }
    if (times.empty()) {
        return;
    }
    const Result mine{median(times), median(cpuTimes), fileSize(fileName)};
    results()[frameName + "/" + key] = mine;
    state.counters["bytes"] = static_cast<double>(mine.bytes);

    const auto& kept = results();
    if (writer == Writer::Png) {
        const auto reference = kept.find(frameName + "/reference-png");
        if (reference != kept.end()) {
            state.counters["speedup"] = reference->second.seconds / mine.seconds;
            state.counters["cpu_speedup"] = reference->second.cpuSeconds / mine.cpuSeconds;
            state.counters["size_ratio"] =
                static_cast<double>(mine.bytes) / static_cast<double>(reference->second.bytes);
        }
    }
    if (writer == Writer::Bmp) {
        const auto raw = kept.find(frameName + "/raw");
        if (raw != kept.end()) {
            state.counters["vs_raw"] = mine.seconds / raw->second.seconds;
            state.counters["cpu_vs_raw"] = mine.cpuSeconds / raw->second.cpuSeconds;
        }
    }
}

void registerFrame(const std::string& frameName) {
    // The reference takes about 0.1 s (UI) and 1.4 s (natural image) a write: a fixed number of
    // writes keeps the run short; the others run for two seconds each.
    const struct {
        const char* key;
        Writer writer;
        int iterations;
    } writers[] = {{"reference-png", Writer::ReferencePng, frameName == "ui" ? 20 : 5},
                   {"png", Writer::Png, 0},
                   {"raw", Writer::Raw, 0},
                   {"bmp", Writer::Bmp, 0}};
    for (const auto& w : writers) {
        const std::string key = w.key;
        const Writer writer = w.writer;
        benchmark::internal::Benchmark* bench =
            benchmark::RegisterBenchmark(("capture/" + frameName + "/" + key).c_str(),
                                         [frameName, writer, key](benchmark::State& state) {
                                             BM_Write(state, frameName, writer, key);
                                         });
        bench->UseManualTime()->Unit(benchmark::kMillisecond);
        if (w.iterations > 0) {
            bench->Iterations(w.iterations);
        } else {
            bench->MinTime(2.0);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    // Only failures reach the terminal; the writers' progress lines would drown the table.
    zo::host::setDebugThreshold(3000);
    registerFrame("ui");
    registerFrame("natural");
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    const std::string directory = benchDirectory();
    if (!directory.empty()) {
        for (const char* name : {"capture-reference-png.png", "capture-png.png", "capture-raw.raw",
                                 "capture-bmp.bmp", "temp.png"}) {
            unlink((directory + "/" + name).c_str());
        }
        rmdir(directory.c_str());
    }
    return 0;
}
