#ifndef SYSCTRLSERVICE_STATUSCODES_H
#define SYSCTRLSERVICE_STATUSCODES_H

namespace sysctrlservice {

// The statuses the service itself returns: 0 for success, a negated Linux error number where the
// service fails for a reason that number names, -1 where it fails for any other reason. A device's
// own failure is logged, or put into a reply text, and not returned (see each operation).
constexpr int kStatusOk = 0;
constexpr int kStatusFailed = -1;
// A missing interface, or a client that is not registered.
constexpr int kStatusNoEntry = -2;  // ENOENT
// A port object that is missing or that failed, in the UART, far-field and provisioning results.
constexpr int kStatusIoError = -5;        // EIO
constexpr int kStatusAccessDenied = -13;  // EACCES
// An empty far-field command line.
constexpr int kStatusBadCommand = -14;  // EFAULT
// A client that is already registered.
constexpr int kStatusExists = -17;  // EEXIST
// An empty client handle, or an event subject of the wrong type.
constexpr int kStatusInvalid = -22;             // EINVAL
constexpr int kStatusConnectionRefused = -111;  // ECONNREFUSED

}  // namespace sysctrlservice

#endif
