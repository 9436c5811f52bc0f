#ifndef FUZZ_FUZZINPUT_H
#define FUZZ_FUZZINPUT_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace sysctrlfuzz {

// Reads a fuzz input piece by piece. Every take succeeds: past the end it yields zeros and empty
// texts, so a target never has to check lengths.
class FuzzInput {
  public:
    FuzzInput(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}

    bool empty() const { return m_pos >= m_size; }
    uint8_t takeByte();
    // Four bytes, least significant first; missing bytes count as zero.
    uint32_t takeU32();
    // Up to `separator` (left out) or the end.
    std::string takeUntil(char separator);
    std::string takeLine() { return takeUntil('\n'); }
    std::string takeRest();

  private:
    const uint8_t* m_data;
    size_t m_size;
    size_t m_pos = 0;
};

}  // namespace sysctrlfuzz

#endif
