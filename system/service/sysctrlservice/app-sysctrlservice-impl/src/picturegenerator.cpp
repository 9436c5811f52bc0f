// Writing a captured frame as a PNG, BMP or raw file.
#include "picturegenerator.h"

#include <errno.h>
#include <png.h>
#include <setjmp.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>

#include <boost/shared_array.hpp>

#include "SysctrlLog.h"

// Levels: file-writing progress is fine detail (5000); a file that cannot be written is an
// error of the operation (3000).

namespace sysctrlservice {

namespace {

// The library version the PNG writer asks for; every libpng 1.6 release accepts it.
const char kPngVersion[] = "1.6.37";

// PNG compression. The header keeps the default compression and filter methods; the zlib level,
// strategy and row filter are ours to choose, and captures run on the thread that serves remote
// calls. Measured with sysctrl-bench and a sweep of the alternatives on two 1920x1080 frames, a
// UI-like and a natural-image one, against libpng's defaults (zlib level 6, all five row filters
// tried on every row: 110 to 130 ms and 1.4 to 1.6 s on a 2-core x86 build machine):
// - row filter "up" alone: files as small as with "sub" or "paeth", and paeth takes a fifth
//   (natural image) to a half (UI) longer; letting libpng choose between sub and up per row
//   saves a tenth of the UI file but takes a third longer;
// - zlib level 2, default strategy: level 1 is a few per cent faster but its natural-image file
//   is 1.24 times the reference's; level 3 doubles the natural image's time; Z_RLE is the fastest
//   on the natural image but makes the UI file 1.8 times the reference (repeated glyphs are not
//   runs);
// - zlib is two thirds of what remains: the UI frame takes about 30 ms (file 1.23 times the
//   reference's) and the natural image about 120 ms (1.21 times).
const int kPngZlibLevel = 2;
const int kPngZlibStrategy = Z_DEFAULT_STRATEGY;
const int kPngRowFilters = PNG_FILTER_UP;

// The BMP writer converts and writes this much at a time: well within a second-level cache.
const size_t kBmpBandBytes = 256 * 1024;

// Pixels in a frame, 0 when either side is not positive.
size_t pixelCount(const BitMap& bitMap) {
    if (bitMap.width <= 0 || bitMap.height <= 0) {
        return 0;
    }
    return static_cast<size_t>(bitMap.width) * static_cast<size_t>(bitMap.height);
}

// Copies the blue, green and red bytes of each source pixel into BMP rows: `height` source rows top
// first become target rows bottom first, `targetRowBytes` apart, the bytes after each row's pixels
// zeroed.
void convertBmpRows(const uint8_t* source, size_t width, size_t height, size_t targetRowBytes,
                    uint8_t* target) {
    for (size_t y = 0; y < height; ++y) {
        const uint8_t* from = source + y * width * 4;
        uint8_t* to = target + (height - 1 - y) * targetRowBytes;
        uint8_t* const rowEnd = to + targetRowBytes;
        size_t x = 0;
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
        // Four pixels (16 bytes) become 12 bytes through two 64-bit loads and an 8- and a 4-byte
        // store: four times faster than byte copies or 32-bit words, whose stores the processor
        // cannot forward to the wider load that follows.
        for (; x + 4 <= width; x += 4, from += 16, to += 12) {
            uint64_t low;
            uint64_t high;
            memcpy(&low, from, 8);
            memcpy(&high, from + 8, 8);
            const uint64_t first =
                (low & 0xFFFFFFull) | ((low >> 8) & 0xFFFFFF000000ull) | (high << 48);
            const uint32_t second =
                static_cast<uint32_t>(((high >> 16) & 0xFFull) | ((high >> 24) & 0xFFFFFF00ull));
            memcpy(to, &first, 8);
            memcpy(to + 8, &second, 4);
        }
#endif
        for (; x < width; ++x, from += 4, to += 3) {
            to[0] = from[0];
            to[1] = from[1];
            to[2] = from[2];
        }
        while (to < rowEnd) {
            *to++ = 0;
        }
    }
}

void putLe16(uint8_t* at, uint16_t value) {
    at[0] = static_cast<uint8_t>(value);
    at[1] = static_cast<uint8_t>(value >> 8);
}

void putLe32(uint8_t* at, uint32_t value) {
    putLe16(at, static_cast<uint16_t>(value));
    putLe16(at + 2, static_cast<uint16_t>(value >> 16));
}

// The 54-byte header of an uncompressed 24-bit file.
void writeBmpHeader(FILE* file, const BitMap& bitMap, uint32_t fileSize) {
    uint8_t header[54] = {'B', 'M'};
    putLe32(header + 2, fileSize);
    putLe32(header + 10, 54);
    putLe32(header + 14, 40);
    putLe32(header + 18, static_cast<uint32_t>(bitMap.width));
    putLe32(header + 22, static_cast<uint32_t>(bitMap.height));
    putLe16(header + 26, 1);
    putLe16(header + 28, 24);
    fwrite(header, 1, sizeof header, file);
}

// The PNG writer's stages log under its name.
const char kGeneratePng[] = "generatePNG";

// The header and the transformations: the source pixels (blue, green, red, alpha) are written as
// RGBA, or as RGB when the bitmap has no alpha.
void writePngHeader(png_structp png, png_infop info, const BitMap& bitMap) {
    const int colorType = bitMap.flag == 1 ? PNG_COLOR_TYPE_RGBA : PNG_COLOR_TYPE_RGB;
    png_set_IHDR(png, info, static_cast<png_uint_32>(bitMap.width),
                 static_cast<png_uint_32>(bitMap.height), bitMap.bit_depth, colorType,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, kPngRowFilters);
    png_set_compression_level(png, kPngZlibLevel);
    png_set_compression_strategy(png, kPngZlibStrategy);
    png_write_info(png, info);

    // Each source pixel (blue, green, red, alpha) becomes red, green, blue and, for RGBA, alpha.
    // libpng's BGR mode swaps the bytes in the copy of each row that it filters anyway, so the
    // rows point into the capture buffer and no converted copy of the frame is made. Without
    // alpha the fourth byte is skipped as filler.
    png_set_bgr(png);
    if (colorType == PNG_COLOR_TYPE_RGB) {
        png_set_filler(png, 0, PNG_FILLER_AFTER);
    }
}

// Writes the whole file through libpng and releases the two structures and the file, whatever
// happens. Each stage has its own landing point for libpng's longjmp. Returns 0 or -1.
int writePng(png_structp png, png_infop info, FILE* file, const BitMap& bitMap) {
    if (setjmp(png_jmpbuf(png))) {
        SYSCTRL_LOG_AS(kGeneratePng, LOG_ERROR, "%s:%d:%s(): Error: set jmp1\n");
        png_destroy_write_struct(&png, &info);
        fclose(file);
        return -1;
    }
    png_init_io(png, file);

    if (setjmp(png_jmpbuf(png))) {
        SYSCTRL_LOG_AS(kGeneratePng, LOG_ERROR,
                       "%s:%d:%s(): Error:failed png_create_write_struct.\n");
        png_destroy_write_struct(&png, &info);
        fclose(file);
        return -1;
    }
    writePngHeader(png, info, bitMap);

    // The row array is allocated inside this stage and stays allocated when it fails.
    png_bytep* rows = nullptr;
    if (setjmp(png_jmpbuf(png))) {
        fputs("Error: set jmp\n", stdout);
        png_destroy_write_struct(&png, &info);
        fclose(file);
        return -1;
    }
    const size_t height = static_cast<size_t>(bitMap.height);
    const size_t rowBytes = static_cast<size_t>(bitMap.width) * 4;
    rows = static_cast<png_bytep*>(png_malloc(png, height * sizeof(png_bytep)));
    for (size_t y = 0; y < height; ++y) {
        rows[y] = bitMap.buffer + y * rowBytes;
    }
    png_write_image(png, rows);

    if (setjmp(png_jmpbuf(png))) {
        png_free(png, rows);
        fputs("Error: set jmp\n", stdout);
        png_destroy_write_struct(&png, &info);
        fclose(file);
        return -1;
    }
    png_write_end(png, nullptr);

    fclose(file);
    png_free(png, rows);
    png_destroy_write_struct(&png, &info);
    return 0;
}

}  // namespace

PictureGenerator::PictureGenerator() : m_bitMap{0, 0, 0, 0, nullptr} {}

PictureGenerator::PictureGenerator(boost::shared_ptr<zo::port::screenCaptureData> data)
    : m_bitMap{0, 0, 0, 0, nullptr} {
    if (!data || data->buffer == nullptr) {
        return;
    }
    m_bitMap.width = static_cast<int32_t>(data->width);
    m_bitMap.height = static_cast<int32_t>(data->height);
    m_bitMap.bit_depth = 8;
    m_bitMap.flag = 1;
    m_bitMap.buffer = data->buffer;
}

PictureGenerator::~PictureGenerator() {}

int PictureGenerator::generate(const std::string& path, const std::string& name) {
    const std::string extension = name.size() >= 4 ? name.substr(name.size() - 4) : std::string();
    if (extension == ".raw") {
        return generateRaw(path.c_str(), name.c_str());
    }
    if (extension == ".bmp") {
        return generateBmp(path.c_str(), name.c_str());
    }
    return generatePNG(path.c_str(), name.c_str());
}

// libpng leaves through longjmp on an error. The two names are made before the first setjmp, so
// a jump never skips a destructor; everything made after it is a plain pointer.
int PictureGenerator::generatePNG(const char* path, const char* name) {
    SYSCTRL_LOG(LOG_FINE, "%s:%d:%s(): In generatePng :%s %s.\n", path, name);
    const std::string tempName = std::string(path) + "/temp.png";
    const std::string fullName = std::string(path) + "/" + name;
    SYSCTRL_LOG(LOG_FINE, "%s:%d:%s(): m_bitMap: height:%d width:%d bit_depth %d flag: %d \n",
                m_bitMap.height, m_bitMap.width, m_bitMap.bit_depth, m_bitMap.flag);

    FILE* file = fopen(tempName.c_str(), "wb");
    if (file == nullptr) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Error: can't open the file.\n");
        return -1;
    }

    png_structp png = png_create_write_struct(kPngVersion, nullptr, nullptr, nullptr);
    if (png == nullptr) {
        fclose(file);
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Error:failed png_create_write_struct.\n");
        return -1;
    }
    png_infop info = png_create_info_struct(png);
    if (info == nullptr) {
        fclose(file);
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Error: failed init info_ptr\n");
        return -1;
    }

    if (writePng(png, info, file, m_bitMap) != 0) {
        return -1;
    }

    // rename replaces a file of the full name; on failure the temporary file stays.
    if (rename(tempName.c_str(), fullName.c_str()) != 0) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): generatePNG path: %s Failed\n", fullName.c_str());
        return -1;
    }
    return 0;
}

int PictureGenerator::generateBmp(const char* path, const char* name) {
    const std::string fullName = std::string(path) + "/" + name;
    SYSCTRL_LOG(LOG_FINE, "%s:%d:%s(): In generateBmp :%s %s. %s\n", path, name, fullName.c_str());
    SYSCTRL_LOG(LOG_FINE, "%s:%d:%s(): m_bitMap: height:%d width:%d bit_depth %d flag: %d \n",
                m_bitMap.height, m_bitMap.width, m_bitMap.bit_depth, m_bitMap.flag);
    SYSCTRL_LOG(LOG_FINE, "%s:%d:%s(): BMP generating started\n");

    // The pixel rows are converted into the order and layout the file stores them in (blue,
    // green, red per pixel, the bottom row first, each row followed by its zero padding), one
    // band of rows at a time, and each band goes out in one write. Converting the whole frame
    // first and writing it a row at a time, with byte copies, made this writer four times slower
    // than the raw one; whole bands and convertBmpRows bring it to about 1.1 times. A band of a
    // quarter megabyte is as fast as the whole frame at once and needs 256 KiB instead of a
    // second 6 MB copy of a 1920x1080 frame.
    const size_t pixels = pixelCount(m_bitMap);
    const size_t width = pixels != 0 ? static_cast<size_t>(m_bitMap.width) : 0;
    const size_t height = pixels != 0 ? static_cast<size_t>(m_bitMap.height) : 0;
    const size_t paddedRowBytes = (width * 3 + 3) / 4 * 4;
    const size_t bandRows = std::max<size_t>(
        1, std::min<size_t>(height, kBmpBandBytes / std::max<size_t>(1, paddedRowBytes)));
    boost::shared_array<uint8_t> band(static_cast<uint8_t*>(malloc(paddedRowBytes * bandRows + 1)),
                                      free);
    if (!band) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): BMP generating failed: no memory for %zu bytes\n",
                    paddedRowBytes * bandRows);
        return -1;
    }

    // The size field leaves out the row padding.
    const uint32_t fileSize =
        static_cast<uint32_t>(static_cast<int64_t>(m_bitMap.width) * m_bitMap.height * 3 + 54);
    SYSCTRL_LOG(LOG_FINE, "%s:%d:%s(): Writing BMP to file system\n");

    FILE* file = fopen(fullName.c_str(), "wb");
    if (file == nullptr) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Failed to open BMP file\n");
        return -1;
    }

    writeBmpHeader(file, m_bitMap, fileSize);
    // Bands from the bottom of the picture up; the last one may hold fewer rows.
    for (size_t done = 0; done < height;) {
        const size_t count = std::min(bandRows, height - done);
        const size_t top = height - done - count;
        convertBmpRows(m_bitMap.buffer + top * width * 4, width, count, paddedRowBytes, band.get());
        fwrite(band.get(), 1, paddedRowBytes * count, file);
        done += count;
    }

    SYSCTRL_LOG(LOG_FINE, "%s:%d:%s(): Flushing BMP to file system\n");
    fflush(file);
    fclose(file);
    SYSCTRL_LOG(LOG_FINE, "%s:%d:%s(): BMP generating finished\n");
    return 0;
}

int PictureGenerator::generateRaw(const char* path, const char* name) {
    SYSCTRL_LOG(LOG_FINE, "%s:%d:%s(): m_bitMap: height:%d width:%d bit_depth %d flag: %d \n",
                m_bitMap.height, m_bitMap.width * 4, m_bitMap.bit_depth, m_bitMap.flag);
    const std::string fullName = std::string(path) + "/" + name;
    SYSCTRL_LOG(LOG_FINE, "%s:%d:%s(): In generateRaw :%s %s. %s\n", path, name, fullName.c_str());

    FILE* file = fopen(fullName.c_str(), "wb");
    if (file == nullptr) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Failed to open RAW file\n");
        return -1;
    }

    const size_t rowBytes = m_bitMap.width > 0 ? static_cast<size_t>(m_bitMap.width) * 4 : 0;
    const size_t rows = m_bitMap.height > 0 ? static_cast<size_t>(m_bitMap.height) : 0;
    const size_t written =
        m_bitMap.buffer != nullptr ? fwrite(m_bitMap.buffer, rowBytes, rows, file) : 0;
    // Compares the block count with the row length, not the row count; it only picks the line.
    if (written == rowBytes) {
        SYSCTRL_LOG(LOG_FINE, "%s:%d:%s(): Flushing RAW to file system \n");
    } else {
        SYSCTRL_LOG(LOG_FINE, "%s:%d:%s(): Flushing RAW to file system  SIZE = %d\n",
                    static_cast<int>(written));
    }
    fflush(file);
    fclose(file);
    changePictureMode(fullName.c_str(), 0644);
    return 0;
}

int PictureGenerator::changePictureMode(const char* file, unsigned int mode) {
    if (access(file, F_OK) != 0) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Access file: %s, error: %s\n", file, strerror(errno));
        return -1;
    }
    if (chmod(file, static_cast<mode_t>(mode)) != 0) {
        SYSCTRL_LOG(LOG_ERROR, "%s:%d:%s(): Change file: %s, mode: 0%o, error: %s\n", file, mode,
                    strerror(errno));
        return -1;
    }
    return 0;
}

}  // namespace sysctrlservice
