// The operating-time records of panel-care events, kept in memory and in a file.
#include "Application.h"

namespace sysctrlservice {

void Application::loadPMRecords() {}

void Application::addPMRecord(PMRType) {}

void Application::storePMRecords() {}

}  // namespace sysctrlservice
