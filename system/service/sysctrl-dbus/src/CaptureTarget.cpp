#include "CaptureTarget.h"

#include <limits.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

#include <cerrno>
#include <memory>

namespace sysctrlservice {
namespace dbus {

namespace {

bool ownedBy(const struct stat& status, uid_t caller) {
    return status.st_uid == 0 || status.st_uid == caller;
}

// Whether someone other than root and the caller may create, rename or remove entries in it.
bool othersMayWrite(const struct stat& status, uid_t caller) {
    const bool groupWrites = (status.st_mode & S_IWGRP) != 0 && status.st_gid != 0;
    return !ownedBy(status, caller) || (status.st_mode & S_IWOTH) != 0 || groupWrites;
}

std::string quoted(const std::string& text) {
    return "'" + text + "'";
}

// The folder's parents, from its own parent up to "/": each must keep others from replacing the
// entry that leads to the folder.
std::string unsafeParent(const std::string& resolved, struct stat childStatus, uid_t caller) {
    std::string child = resolved;
    while (child != "/") {
        const size_t slash = child.rfind('/');
        const std::string parent = slash == 0 ? "/" : child.substr(0, slash);
        struct stat parentStatus {};
        if (lstat(parent.c_str(), &parentStatus) != 0) {
            return "the folder " + quoted(parent) + " cannot be checked: " + strerror(errno);
        }
        const bool sticky = (parentStatus.st_mode & S_ISVTX) != 0;
        if (othersMayWrite(parentStatus, caller) && !(sticky && ownedBy(childStatus, caller))) {
            return "others may replace " + quoted(child) + " in " + quoted(parent);
        }
        child = parent;
        childStatus = parentStatus;
    }
    return std::string();
}

}  // namespace

std::string unsafeCaptureTarget(const std::string& folder, const std::string& name, uid_t caller) {
    if (name.find('/') != std::string::npos || name == "." || name == "..") {
        return "the name " + quoted(name) + " leaves the folder";
    }
    const std::unique_ptr<char, decltype(&free)> resolved(realpath(folder.c_str(), nullptr), &free);
    if (!resolved) {
        return "the folder " + quoted(folder) + " cannot be checked: " + strerror(errno);
    }
    struct stat status {};
    if (stat(resolved.get(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        return quoted(folder) + " is not a folder";
    }
    if (othersMayWrite(status, caller)) {
        return "others than root and the caller may write into the folder " + quoted(folder);
    }
    return unsafeParent(resolved.get(), status, caller);
}

}  // namespace dbus
}  // namespace sysctrlservice
