#include "TestCard.h"

#include <string>

namespace sim {
namespace {

struct Color {
    uint8_t red;
    uint8_t green;
    uint8_t blue;
};

const Color kBars[] = {{255, 255, 255}, {255, 255, 0}, {0, 255, 255}, {0, 255, 0},
                       {255, 0, 255},   {255, 0, 0},   {0, 0, 255},   {0, 0, 0}};
const uint8_t kTextBackground = 32;

// 5 x 7 letters, one byte a row, the leftmost column in bit 4; only the characters the card uses.
struct Glyph {
    char character;
    uint8_t rows[7];
};
const Glyph kGlyphs[] = {
    {'A', {0x0E, 0x11, 0x11, 0x1F, 0x11, 0x11, 0x11}},
    {'C', {0x0E, 0x11, 0x10, 0x10, 0x10, 0x11, 0x0E}},
    {'D', {0x1E, 0x11, 0x11, 0x11, 0x11, 0x11, 0x1E}},
    {'E', {0x1F, 0x10, 0x10, 0x1E, 0x10, 0x10, 0x1F}},
    {'L', {0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x1F}},
    {'R', {0x1E, 0x11, 0x11, 0x1E, 0x14, 0x12, 0x11}},
    {'S', {0x0F, 0x10, 0x10, 0x0E, 0x01, 0x01, 0x1E}},
    {'T', {0x1F, 0x04, 0x04, 0x04, 0x04, 0x04, 0x04}},
    {'X', {0x11, 0x11, 0x0A, 0x04, 0x0A, 0x11, 0x11}},
    {'Y', {0x11, 0x11, 0x0A, 0x04, 0x04, 0x04, 0x04}},
    {'0', {0x0E, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0E}},
    {'1', {0x04, 0x0C, 0x04, 0x04, 0x04, 0x04, 0x0E}},
    {'2', {0x0E, 0x11, 0x01, 0x02, 0x04, 0x08, 0x1F}},
    {'3', {0x1F, 0x02, 0x04, 0x02, 0x01, 0x11, 0x0E}},
    {'4', {0x02, 0x06, 0x0A, 0x12, 0x1F, 0x02, 0x02}},
    {'5', {0x1F, 0x10, 0x1E, 0x01, 0x01, 0x11, 0x0E}},
    {'6', {0x06, 0x08, 0x10, 0x1E, 0x11, 0x11, 0x0E}},
    {'7', {0x1F, 0x01, 0x02, 0x04, 0x08, 0x08, 0x08}},
    {'8', {0x0E, 0x11, 0x11, 0x0E, 0x11, 0x11, 0x0E}},
    {'9', {0x0E, 0x11, 0x11, 0x0F, 0x01, 0x02, 0x0C}},
};
const int kGlyphWidth = 5;
const int kGlyphHeight = 7;
const int kGlyphAdvance = 6;

// The rows of the glyph for `character`; nullptr for a blank.
const uint8_t* glyphRows(char character) {
    for (const Glyph& glyph : kGlyphs) {
        if (glyph.character == character) {
            return glyph.rows;
        }
    }
    return nullptr;
}

class Canvas {
  public:
    Canvas(uint8_t* pixels, uint32_t width, uint32_t height, uint32_t stride)
        : m_pixels(pixels), m_width(width), m_height(height), m_stride(stride) {}

    // Pixels outside the frame are left alone.
    void put(int64_t x, int64_t y, Color color) {
        if (x < 0 || y < 0 || x >= m_width || y >= m_height) {
            return;
        }
        uint8_t* pixel = m_pixels + static_cast<size_t>(y) * m_stride + static_cast<size_t>(x) * 4;
        pixel[0] = color.blue;
        pixel[1] = color.green;
        pixel[2] = color.red;
        pixel[3] = 0xFF;
    }

    void fill(int64_t left, int64_t top, int64_t right, int64_t bottom, Color color) {
        for (int64_t y = top; y < bottom; ++y) {
            for (int64_t x = left; x < right; ++x) {
                put(x, y, color);
            }
        }
    }

  private:
    uint8_t* m_pixels;
    int64_t m_width;
    int64_t m_height;
    uint32_t m_stride;
};

Color grey(uint8_t level) {
    return Color{level, level, level};
}

void drawText(Canvas& canvas, const std::string& text, int64_t left, int64_t top, int64_t scale) {
    for (size_t index = 0; index < text.size(); ++index) {
        const uint8_t* rows = glyphRows(text[index]);
        const int64_t glyphLeft = left + static_cast<int64_t>(index) * kGlyphAdvance * scale;
        for (int row = 0; rows != nullptr && row < kGlyphHeight; ++row) {
            for (int column = 0; column < kGlyphWidth; ++column) {
                if ((rows[row] & (0x10 >> column)) != 0) {
                    const int64_t x = glyphLeft + column * scale;
                    const int64_t y = top + row * scale;
                    canvas.fill(x, y, x + scale, y + scale, grey(255));
                }
            }
        }
    }
}

}  // namespace

void drawTestCard(uint8_t* pixels, uint32_t width, uint32_t height, uint32_t stride) {
    if (pixels == nullptr || width == 0 || height == 0) {
        return;
    }
    Canvas canvas(pixels, width, height, stride);
    const int64_t w = width;
    const int64_t h = height;
    const int64_t rampTop = h * 7 / 12;
    const int64_t linesTop = h * 9 / 12;
    const int64_t textTop = h * 10 / 12;

    for (int64_t bar = 0; bar < 8; ++bar) {
        canvas.fill(bar * w / 8, 0, (bar + 1) * w / 8, rampTop, kBars[bar]);
    }
    for (int64_t x = 0; x < w; ++x) {
        const uint8_t level = static_cast<uint8_t>(w > 1 ? x * 255 / (w - 1) : 0);
        canvas.fill(x, rampTop, x + 1, linesTop, grey(level));
    }
    for (int64_t y = linesTop; y < textTop; ++y) {
        for (int64_t x = 0; x < w; ++x) {
            const int64_t quarter = x * 4 / w;
            const int64_t phase = quarter == 0   ? x
                                  : quarter == 1 ? x / 2
                                  : quarter == 2 ? y
                                                 : x + y;
            canvas.put(x, y, grey(phase % 2 == 0 ? 255 : 0));
        }
    }
    canvas.fill(0, textTop, w, h, grey(kTextBackground));

    const std::string text =
        "SYSCTRL TEST CARD " + std::to_string(width) + "X" + std::to_string(height);
    const int64_t scale = h >= 108 ? h / 108 : 1;
    const int64_t inkWidth = static_cast<int64_t>(text.size()) * kGlyphAdvance * scale - scale;
    drawText(canvas, text, (w - inkWidth) / 2, textTop + (h - textTop - kGlyphHeight * scale) / 2,
             scale);
}

}  // namespace sim
