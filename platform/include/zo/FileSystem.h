#ifndef ZO_FILESYSTEM_H
#define ZO_FILESYSTEM_H

#include <string>

namespace zo {
namespace fs {

// Maps one of the system's fixed absolute paths ("/var/tvservice/...", "/quentadata/...") to the
// path to open. On a set this is the path itself; a desk platform maps it under a directory of its
// own.
std::string path(const std::string& absolutePath);

}  // namespace fs
}  // namespace zo

#endif
