#ifndef SIM_TESTCARD_H
#define SIM_TESTCARD_H

#include <cstdint>

namespace sim {

// Draws a test card into `pixels` (rows of `stride` bytes, each pixel blue, green, red, alpha, all
// opaque), laid out in proportion to the frame; at 1920 x 1080:
//   rows    0-629   eight colour bars of 240 columns: white, yellow, cyan, green, magenta, red,
//                   blue, black (full intensity)
//   rows  630-809   a grey ramp, level x * 255 / (width - 1)
//   rows  810-899   fine lines, one quarter of the width each: 1-pixel and 2-pixel vertical lines,
//                   1-pixel horizontal lines and a 1-pixel checkerboard (white where even)
//   rows  900-1079  "SYSCTRL TEST CARD 1920X1080" in white 5 x 7 letters scaled by height / 108,
//                   centred on dark grey (32)
// Text that does not fit a small frame is cut at its edges.
void drawTestCard(uint8_t* pixels, uint32_t width, uint32_t height, uint32_t stride);

}  // namespace sim

#endif
