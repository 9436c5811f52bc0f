#include "zo/Thread.h"

#include <pthread.h>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>

#include "HostState.h"

namespace zo {
namespace host {
namespace {

struct Tracker {
    std::mutex mutex;
    std::condition_variable ended;
    size_t running = 0;
};

Tracker& tracker() {
    static Tracker instance;
    return instance;
}

struct Start {
    zo::thread::Entry entry;
    void* argument;
};

void* trampoline(void* raw) {
    Start start = *static_cast<Start*>(raw);
    delete static_cast<Start*>(raw);
    start.entry(start.argument);
    Tracker& t = tracker();
    std::lock_guard<std::mutex> lock(t.mutex);
    --t.running;
    t.ended.notify_all();
    return nullptr;
}

}  // namespace

int startThread(zo::thread::Entry entry, void* argument, const char* name) {
    if (entry == nullptr) {
        return -22;
    }
    Tracker& t = tracker();
    {
        std::lock_guard<std::mutex> lock(t.mutex);
        ++t.running;
    }
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    pthread_t thread;
    Start* start = new Start{entry, argument};
    const int error = pthread_create(&thread, &attributes, &trampoline, start);
    pthread_attr_destroy(&attributes);
    if (error != 0) {
        delete start;
        std::lock_guard<std::mutex> lock(t.mutex);
        --t.running;
        t.ended.notify_all();
        return -error;
    }
    if (name != nullptr) {
        // Linux limits thread names to 15 characters.
        char shortName[16];
        std::strncpy(shortName, name, sizeof shortName - 1);
        shortName[sizeof shortName - 1] = '\0';
        pthread_setname_np(thread, shortName);
    }
    return 0;
}

void sleepThread(unsigned int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void waitForThreads() {
    Tracker& t = tracker();
    std::unique_lock<std::mutex> lock(t.mutex);
    t.ended.wait(lock, [&t] { return t.running == 0; });
}

}  // namespace host

namespace thread {

int create(Handle** handle, Entry entry, void* argument, int priority, const char* name) {
    if (handle != nullptr) {
        *handle = nullptr;  // this runtime hands out no handles: its threads are detached
    }
    const host::Hooks hooks = host::currentHooks();
    if (hooks.createThread) {
        return hooks.createThread(entry, argument, priority, name);
    }
    return host::startThread(entry, argument, name);
}

void sleep(unsigned int milliseconds) {
    const host::Hooks hooks = host::currentHooks();
    if (hooks.sleep) {
        hooks.sleep(milliseconds);
        return;
    }
    host::sleepThread(milliseconds);
}

}  // namespace thread
}  // namespace zo
