#include "zo/Mutex.h"

#include <mutex>

namespace zo {

struct Mutex::Impl {
    std::mutex mutex;
};

Mutex::Mutex() : m_impl(new Impl) {}

Mutex::~Mutex() {
    delete m_impl;
}

void Mutex::lock() {
    m_impl->mutex.lock();
}

void Mutex::unlock() {
    m_impl->mutex.unlock();
}

}  // namespace zo
