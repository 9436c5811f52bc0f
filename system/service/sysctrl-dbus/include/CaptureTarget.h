#ifndef SYSCTRL_DBUS_CAPTURETARGET_H
#define SYSCTRL_DBUS_CAPTURETARGET_H

#include <sys/types.h>

#include <string>

namespace sysctrlservice {
namespace dbus {

// Why a capture of `name` into `folder` on behalf of the user `caller` must be refused, or an
// empty text when it may go ahead. The service writes "folder/temp.png" and "folder/name",
// following links, and the bridge runs as root; so the bridge refuses:
// - a name that leaves the folder (one holding '/', ".", "..");
// - a folder that cannot be resolved or is not a folder;
// - a folder that someone other than root and the caller could write into: owned by another user,
//   writable by others, or writable by a group other than root's (logrotate's rule);
// - a folder that someone else could replace: one of its parents is writable by someone other than
//   root and the caller, unless that parent is sticky and what lies in it on the way to the folder
//   belongs to root or the caller (so /tmp/mine is accepted when "mine" is the caller's).
std::string unsafeCaptureTarget(const std::string& folder, const std::string& name, uid_t caller);

}  // namespace dbus
}  // namespace sysctrlservice

#endif
