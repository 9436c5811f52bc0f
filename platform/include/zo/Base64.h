#ifndef ZO_BASE64_H
#define ZO_BASE64_H

#include <cstddef>

namespace zo {
namespace base64 {

// Decodes `length` characters of standard Base64 (RFC 4648 alphabet, "=" padding, blanks and line
// ends skipped). Returns the number of decoded bytes and sets *bytes to a buffer the caller frees
// with release(); returns a negative value for malformed input, leaving *bytes null.
int decode(const char* text, size_t length, unsigned char** bytes);

// Encodes `length` bytes as padded standard Base64. Returns the text's length and sets *text to a
// NUL-terminated buffer the caller frees with release(); negative if no memory.
int encode(const unsigned char* bytes, size_t length, char** text);

void release(void* buffer);

}  // namespace base64
}  // namespace zo

#endif
