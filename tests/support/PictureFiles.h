// Reading back the picture files the capture writes: raw bytes, BMP fields, PNG decoded by libpng
// and checked by pngcheck.
#ifndef TESTS_PICTUREFILES_H
#define TESTS_PICTUREFILES_H

#include <png.h>
#include <sys/stat.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace sysctrltest {

typedef std::vector<uint8_t> Bytes;

inline Bytes readBytes(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The permission bits, or -1 when the file is missing.
inline int fileMode(const std::string& file) {
    struct stat info;
    return stat(file.c_str(), &info) == 0 ? static_cast<int>(info.st_mode & 07777) : -1;
}

inline uint32_t le32(const Bytes& bytes, size_t at) {
    return bytes.at(at) | bytes.at(at + 1) << 8 | bytes.at(at + 2) << 16 |
           static_cast<uint32_t>(bytes.at(at + 3)) << 24;
}

// A PNG file as libpng decodes it (8-bit red, green, blue, alpha; rows top first; no pixels when
// it does not decode), with the header's bit depth, colour type, compression, filter and
// interlace bytes as stored.
struct DecodedPng {
    uint32_t width = 0;
    uint32_t height = 0;
    Bytes header;
    Bytes pixels;
};

inline DecodedPng decodePng(const std::string& file) {
    DecodedPng decoded;
    const Bytes bytes = readBytes(file);
    png_image image;
    memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) == 0) {
        return decoded;
    }
    image.format = PNG_FORMAT_RGBA;
    Bytes pixels(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr) == 0) {
        png_image_free(&image);
        return decoded;
    }
    decoded.width = image.width;
    decoded.height = image.height;
    // After the signature and IHDR's length, type, width and height.
    decoded.header.assign(bytes.begin() + 24, bytes.begin() + 29);
    decoded.pixels.swap(pixels);
    return decoded;
}

// pngcheck's verdict (it checks every chunk's CRC, the zlib stream and the header fields).
inline bool pngcheckAccepts(const std::string& file) {
    return std::system(("pngcheck -q '" + file + "' >/dev/null 2>&1").c_str()) == 0;
}

// Blue-green-red-alpha pixels as red-green-blue-alpha, the way a PNG stores them.
inline Bytes toRgba(Bytes pixels) {
    for (size_t i = 0; i + 3 < pixels.size(); i += 4) {
        std::swap(pixels[i], pixels[i + 2]);
    }
    return pixels;
}

}  // namespace sysctrltest

#endif
