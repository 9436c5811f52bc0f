#ifndef SYSCTRLSERVICE_SERVICETYPES_H
#define SYSCTRLSERVICE_SERVICETYPES_H

#include <cstdint>
#include <vector>

#include "frame/MsgIds.h"
#include "frame/TransportInfo.h"

namespace sysctrlservice {

// The kinds of panel-care events kept in the operating-time records.
enum PMRType : int32_t {
    PMR_MAINT_RUN = 0,
    PMR_MAINT_CLEARED = 1,
    PMR_REFRESH_RUN = 2,
    PMR_REFRESH_CLEARED = 3,
};

const unsigned int PMR_TYPE_COUNT = 4;

// One panel-care event: when it happened in UTC and in the set's accumulated running time.
struct PMRecord {
    uint64_t time;
    uint64_t runningTime;
};

// Newest first.
typedef std::vector<PMRecord> PMRecordList;

// Identifiers of a report that no request asked for; clients tell such reports by them.
inline frame::MsgIds unsolicitedMsgIds() {
    return frame::MsgIds{{-1, -1}};
}

inline frame::TransportInfo unsolicitedTransportInfo() {
    return frame::TransportInfo{{-1, -1, 0, -1, -1, -1, -1}};
}

}  // namespace sysctrlservice

#endif
