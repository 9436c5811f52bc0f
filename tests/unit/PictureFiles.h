// Reading back the picture files the capture writes: raw bytes, BMP fields, PNG decoded by libpng
// and checked by pngcheck.
#ifndef TESTS_PICTUREFILES_H
#define TESTS_PICTUREFILES_H

#include <png.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace sysctrltest {

inline std::vector<uint8_t> readBytes(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in),
                                std::istreambuf_iterator<char>());
}

inline bool fileExists(const std::string& file) {
    struct stat info;
    return stat(file.c_str(), &info) == 0;
}

// The permission bits, or -1 when the file is missing.
inline int fileMode(const std::string& file) {
    struct stat info;
    return stat(file.c_str(), &info) == 0 ? static_cast<int>(info.st_mode & 07777) : -1;
}

inline uint32_t le32(const std::vector<uint8_t>& bytes, size_t at) {
    return static_cast<uint32_t>(bytes.at(at)) | static_cast<uint32_t>(bytes.at(at + 1)) << 8 |
           static_cast<uint32_t>(bytes.at(at + 2)) << 16 |
           static_cast<uint32_t>(bytes.at(at + 3)) << 24;
}

inline uint16_t le16(const std::vector<uint8_t>& bytes, size_t at) {
    return static_cast<uint16_t>(bytes.at(at) | bytes.at(at + 1) << 8);
}

inline uint32_t be32(const std::vector<uint8_t>& bytes, size_t at) {
    return static_cast<uint32_t>(bytes.at(at)) << 24 |
           static_cast<uint32_t>(bytes.at(at + 1)) << 16 |
           static_cast<uint32_t>(bytes.at(at + 2)) << 8 | static_cast<uint32_t>(bytes.at(at + 3));
}

// A PNG file read back: the header fields as stored, and the pixels as libpng decodes them
// (8-bit red, green, blue, alpha; rows top first).
struct DecodedPng {
    bool ok = false;
    uint32_t width = 0;
    uint32_t height = 0;
    int bitDepth = 0;
    int colorType = 0;
    int compression = 0;
    int filter = 0;
    int interlace = 0;
    std::vector<uint8_t> pixels;
};

inline DecodedPng decodePng(const std::string& file) {
    DecodedPng decoded;
    // The signature, then IHDR as the first chunk: length 13, type, width, height, bit depth,
    // colour type, compression, filter, interlace.
    const std::vector<uint8_t> bytes = readBytes(file);
    static const uint8_t kSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    if (bytes.size() < 33 || !std::equal(kSignature, kSignature + 8, bytes.begin()) ||
        be32(bytes, 8) != 13 || std::string(bytes.begin() + 12, bytes.begin() + 16) != "IHDR") {
        return decoded;
    }
    decoded.width = be32(bytes, 16);
    decoded.height = be32(bytes, 20);
    decoded.bitDepth = bytes[24];
    decoded.colorType = bytes[25];
    decoded.compression = bytes[26];
    decoded.filter = bytes[27];
    decoded.interlace = bytes[28];

    png_image image;
    memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) == 0) {
        return decoded;
    }
    image.format = PNG_FORMAT_RGBA;
    decoded.pixels.resize(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, decoded.pixels.data(), 0, nullptr) == 0) {
        png_image_free(&image);
        decoded.pixels.clear();
        return decoded;
    }
    decoded.ok = image.width == decoded.width && image.height == decoded.height;
    return decoded;
}

// pngcheck's verdict (it checks every chunk's CRC, the zlib stream and the header fields).
inline bool pngcheckAccepts(const std::string& file) {
    const std::string command = "pngcheck -q '" + file + "' >/dev/null 2>&1";
    return std::system(command.c_str()) == 0;
}

// Blue-green-red-alpha pixels as red-green-blue-alpha, the way a PNG stores them.
inline std::vector<uint8_t> toRgba(const std::vector<uint8_t>& bgra) {
    std::vector<uint8_t> rgba(bgra.size());
    for (size_t i = 0; i + 3 < bgra.size(); i += 4) {
        rgba[i] = bgra[i + 2];
        rgba[i + 1] = bgra[i + 1];
        rgba[i + 2] = bgra[i];
        rgba[i + 3] = bgra[i + 3];
    }
    return rgba;
}

}  // namespace sysctrltest

#endif
