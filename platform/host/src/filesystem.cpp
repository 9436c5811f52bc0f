#include "zo/FileSystem.h"

#include <mutex>

#include "zo/host/Host.h"

namespace zo {
namespace {

std::mutex& rootMutex() {
    static std::mutex mutex;
    return mutex;
}

std::string& root() {
    static std::string directory;
    return directory;
}

}  // namespace

namespace fs {

std::string path(const std::string& absolutePath) {
    std::lock_guard<std::mutex> lock(rootMutex());
    if (root().empty()) {
        return absolutePath;
    }
    return root() + absolutePath;
}

}  // namespace fs

namespace host {

void setFileSystemRoot(const std::string& directory) {
    std::lock_guard<std::mutex> lock(rootMutex());
    root() = directory;
    while (root().size() > 1 && root().back() == '/') {
        root().pop_back();
    }
    if (root() == "/") {
        root().clear();
    }
}

std::string getFileSystemRoot() {
    std::lock_guard<std::mutex> lock(rootMutex());
    return root();
}

}  // namespace host
}  // namespace zo
