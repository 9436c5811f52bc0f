#ifndef ZO_MUTEX_H
#define ZO_MUTEX_H

namespace zo {

// The platform's non-recursive mutex.
class Mutex {
  public:
    Mutex();
    ~Mutex();

    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock();
    void unlock();

  private:
    struct Impl;
    Impl* m_impl;
};

// Holds a Mutex for the lifetime of the guard.
class MutexGuard {
  public:
    explicit MutexGuard(Mutex& mutex) : m_mutex(mutex) { m_mutex.lock(); }
    ~MutexGuard() { m_mutex.unlock(); }

    MutexGuard(const MutexGuard&) = delete;
    MutexGuard& operator=(const MutexGuard&) = delete;

  private:
    Mutex& m_mutex;
};

}  // namespace zo

#endif
