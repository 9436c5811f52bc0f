#ifndef SYSCTRLSERVICE_PICTUREGENERATOR_H
#define SYSCTRLSERVICE_PICTUREGENERATOR_H

#include <cstdint>
#include <string>

#include <boost/shared_ptr.hpp>

#include "zo/port/ScreenCapture.h"

namespace sysctrlservice {

// The frame a generator writes. The pixel bytes belong to whoever captured them.
struct BitMap {
    int32_t width;
    int32_t height;
    int32_t bit_depth;  // bits per colour channel
    int32_t flag;       // 1: the frame's alpha channel is kept
    uint8_t* buffer;    // width x height pixels of blue, green, red, alpha; top row first
};

// Writes one captured frame as a PNG, BMP or raw file. A generator is made for one capture and
// used by one thread; it never owns the pixel memory.
class PictureGenerator {
  public:
    // An empty frame: every field zero.
    PictureGenerator();
    // The frame the capture port filled: its width, height and buffer, 8 bits per channel, alpha
    // kept. An empty handle, or a record without a buffer, gives the empty frame.
    explicit PictureGenerator(boost::shared_ptr<zo::port::screenCaptureData> data);
    ~PictureGenerator();

    // Writes "path/name" in the format the name's last four characters choose (".raw", ".bmp",
    // anything else PNG). Returns 0 when written, -1 when not.
    int generate(const std::string& path, const std::string& name);

    // Each writer returns 0 when the file was written and -1 when it was not. The PNG writer goes
    // through "path/temp.png" and renames it; the raw writer also returns 0 after a short write.
    int generatePNG(const char* path, const char* name);
    int generateBmp(const char* path, const char* name);
    int generateRaw(const char* path, const char* name);

    // Sets `file`'s permission bits to `mode`; returns 0, or -1 when the file does not exist or
    // the mode cannot be set (both logged).
    int changePictureMode(const char* file, unsigned int mode);

    const BitMap& bitMap() const { return m_bitMap; }

  private:
    BitMap m_bitMap;
};

}  // namespace sysctrlservice

#endif
