#pragma once

#include <dlfcn.h>

#include <atomic>
#include <string>

namespace tessarune {

/// A library that is loaded when it is first needed, since it brings many others along: FFmpeg's a
/// hundred, whose loading takes a fifth of a program's start. Some of those start threads as they
/// are loaded, which would take the signals of a program that has not blocked them yet.
///
/// Any thread. Stays loaded until the process ends.
class LateLibrary {
  public:
    /// The file has the version whose headers the program is compiled with.
    constexpr explicit LateLibrary(const char* file) : file_(file) {}
    LateLibrary(const LateLibrary&) = delete;

    /// Gives why it cannot be loaded; empty: it is.
    std::string load() {
        if (handle_)
            return {};
        void* const handle = dlopen(file_, RTLD_LAZY | RTLD_LOCAL);
        if (!handle)
            return dlerror();
        handle_ = handle;
        return {};
    }
    /// Null where there is no such function, or no library.
    void* find(const char* function) { return load().empty() ? dlsym(handle_, function) : nullptr; }

  private:
    const char* const file_;
    std::atomic<void*> handle_ = nullptr;
};

/// A function of a library that has been loaded; called like the function itself. Any thread.
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
