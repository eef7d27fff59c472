#pragma once

#include "TessaruneCore/host/Mutex.h"

#include <cassert>

namespace tessarune {

/// A mutex that is never nested: a thread holds at most one SoleLock at a time, so these locks
/// cannot deadlock. Builds with assertions abort if a thread that holds one locks another.
class CAPABILITY("mutex") SoleLock {
  public:
    void lock() ACQUIRES_LOCK() {
        assertNoneHeld();
        mutex_.lock();
#ifndef NDEBUG
        held_ = true;
#endif
    }

    void unlock() RELEASES_LOCK() {
#ifndef NDEBUG
        held_ = false;
#endif
        mutex_.unlock();
    }

    /// Call it before code that must not run under such a lock, such as callbacks.
    static void assertNoneHeld() {
#ifndef NDEBUG
        assert(!held_);
#endif
    }

  private:
    Mutex mutex_;
#ifndef NDEBUG
    static inline thread_local bool held_ = false;
#endif
};

} // namespace tessarune
