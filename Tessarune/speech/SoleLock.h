#pragma once

#include "TessaruneCore/host/Mutex.h"

#include <cassert>

namespace tessarune {

/// A mutex of a kind that a thread holds at most one of, so that a deadlock is impossible. Builds
/// with assertions abort when a thread locks a second one, whichever it is.
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

    /// For code that must not run under such a lock: calls into foreign code.
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
