#pragma once

#include <dlfcn.h>

#include <atomic>
#include <string>

namespace tessarune::ffmpeg {

/// One of FFmpeg's libraries, loaded when it is first needed: together they bring a hundred others
/// along, whose loading takes a fifth of a program's start. Some of those start threads as they are
/// loaded, which would take the signals of a program that has not blocked them yet.
///
/// Any thread. Stays loaded until the process ends.
class Library {
  public:
    /// The file has the version whose headers the program is compiled with.
    constexpr explicit Library(const char* file) : file_(file) {}
    Library(const Library&) = delete;

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
class Function {
  public:
    constexpr Function(Library& library, const char* name) : library_(library), name_(name) {}

    operator Signature*() const {
        if (!found_)
            found_ = reinterpret_cast<Signature*>(library_.find(name_));
        return found_;
    }

  private:
    Library& library_;
    const char* const name_;
    mutable std::atomic<Signature*> found_ = nullptr;
};

} // namespace tessarune::ffmpeg
