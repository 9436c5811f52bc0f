#ifndef ZO_PORT_OPERATIONHOURS_H
#define ZO_PORT_OPERATIONHOURS_H

#include <cstdint>
#include <string>

#include "zo/port/Event.h"

namespace zo {
namespace port {

// The set's operating-time counters 0 to 4. Its events are of class EVENT_CLASS_OPERATION_HOURS.
class OperationHours : public EventSubject {
  public:
    OperationHours();
    ~OperationHours() override;

    virtual int getOperationTime(int index, uint32_t& value) = 0;
    virtual int getOperationTimeText(std::string& text) = 0;
    virtual int clearOperationTime(int index) = 0;
};

}  // namespace port
}  // namespace zo

#endif
