#pragma once

#include <dlfcn.h>

#include <atomic>
#include <string>

namespace tessarune {

/// A shared library that is loaded on first use instead of at the program's start. FFmpeg's
/// libraries depend on a hundred others, whose loading takes a fifth of the start-up time. Some
/// libraries also start threads while they are loaded; at the program's start, such a thread would
/// receive the signals that the program has not blocked yet.
///
/// Any thread. The library stays loaded until the process ends.
class LateLibrary {
  public:
    /// `file` names the version whose headers the program is compiled with.
    constexpr explicit LateLibrary(const char* file) : file_(file) {}
    LateLibrary(const LateLibrary&) = delete;

    /// Loads the library. Returns the reason for a failure, empty on success.
    std::string load() {
        if (handle_)
            return {};
        void* const handle = dlopen(file_, RTLD_LAZY | RTLD_LOCAL);
        if (!handle)
            return dlerror();
        handle_ = handle;
        return {};
    }
    /// Null if the function or the library is missing.
    void* find(const char* function) { return load().empty() ? dlsym(handle_, function) : nullptr; }

  private:
    const char* const file_;
    std::atomic<void*> handle_ = nullptr;
};

/// A function of a LateLibrary; called like the function itself, after a successful `load`. Any
/// thread.
template <typename Signature>
class LateFunction {
  public:
    constexpr LateFunction(LateLibrary& library, const char* name)
        : library_(library), name_(name) {}

    operator Signature*() const {
        if (!found_)
            found_ = reinterpret_cast<Signature*>(library_.find(name_));
        return found_;
    }

  private:
    LateLibrary& library_;
    const char* const name_;
    mutable std::atomic<Signature*> found_ = nullptr;
};

} // namespace tessarune
