#pragma once

#include <mutex>

// The annotations of Clang's thread safety analysis: a member marked GUARDED_BY a mutex is used
// only while the mutex is locked. Other compilers ignore them.
#ifdef __clang__
#define TESSARUNE_MARK(mark) __attribute__((mark))
#else
#define TESSARUNE_MARK(mark)
#endif

#define CAPABILITY(name) TESSARUNE_MARK(capability(name))
#define SCOPED_CAPABILITY TESSARUNE_MARK(scoped_lockable)
#define GUARDED_BY(mutex) TESSARUNE_MARK(guarded_by(mutex))
#define REQUIRES_LOCK(...) TESSARUNE_MARK(requires_capability(__VA_ARGS__))
#define ACQUIRES_LOCK(...) TESSARUNE_MARK(acquire_capability(__VA_ARGS__))
#define RELEASES_LOCK(...) TESSARUNE_MARK(release_capability(__VA_ARGS__))
#define RETURNS_LOCK(mutex) TESSARUNE_MARK(lock_returned(mutex))

namespace tessarune {

/// A mutex with annotations for the analysis.
class CAPABILITY("mutex") Mutex {
  public:
    void lock() ACQUIRES_LOCK() { mutex_.lock(); }
    void unlock() RELEASES_LOCK() { mutex_.unlock(); }

  private:
    std::mutex mutex_;
};

/// Holds a mutex for the lifetime of the lock. A `std::condition_variable_any` may release the
/// mutex during a wait.
template <typename Lockable>
class SCOPED_CAPABILITY MutexLock {
  public:
    explicit MutexLock(Lockable& mutex) ACQUIRES_LOCK(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~MutexLock() RELEASES_LOCK() {
        if (holds_)
            mutex_.unlock();
    }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

    void lock() ACQUIRES_LOCK() {
        mutex_.lock();
        holds_ = true;
    }
    void unlock() RELEASES_LOCK() {
        holds_ = false;
        mutex_.unlock();
    }

  private:
    Lockable& mutex_;
    bool holds_ = true;
};

} // namespace tessarune
