#ifndef FRAME_ABSTRACTAPPLICATION_H
#define FRAME_ABSTRACTAPPLICATION_H

#include "frame/AbstractProcessMember.h"
#include "zo/Mutex.h"

namespace frame {

// An application plug-in. The framework loads the plug-in library, calls its
// frameCreateApplicationArray() entry and drives every application of the returned null-terminated
// array through the process-member life cycle; it deletes each application when it unloads.
class AbstractApplication : public AbstractProcessMember {
  public:
    AbstractApplication();
    ~AbstractApplication() override;

  protected:
    int32_t performSetupDone() override;
    int32_t performStarting() override;
    int32_t performStopping() override;

    // One lock per application object, for the application's own use.
    zo::Mutex& getApplicationLock();

  private:
    zo::Mutex m_applicationLock;
};

// The signature of a plug-in's entry.
typedef AbstractApplication** (*CreateApplicationArrayFunction)();

}  // namespace frame

#endif
