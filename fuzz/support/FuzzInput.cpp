#include "FuzzInput.h"

#include <algorithm>

namespace sysctrlfuzz {

uint8_t FuzzInput::takeByte() {
    return empty() ? 0 : m_data[m_pos++];
}

uint32_t FuzzInput::takeU32() {
    uint32_t value = 0;
    for (int shift = 0; shift < 32; shift += 8) {
        value |= static_cast<uint32_t>(takeByte()) << shift;
    }
    return value;
}

std::string FuzzInput::takeUntil(char separator) {
    const uint8_t* begin = m_data + std::min(m_pos, m_size);
    const uint8_t* end = m_data + m_size;
    const uint8_t* found = std::find(begin, end, static_cast<uint8_t>(separator));
    m_pos = static_cast<size_t>(found - m_data) + 1;
    return std::string(begin, found);
}

std::string FuzzInput::takeRest() {
    const uint8_t* begin = m_data + std::min(m_pos, m_size);
    m_pos = m_size;
    return std::string(begin, m_data + m_size);
}

}  // namespace sysctrlfuzz
