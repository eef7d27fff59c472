#include "bench/live/EngineMeter.h"

#include "bench/support/CPUClock.h"

#include <dirent.h>

#include <charconv>
#include <cstring>
#include <fstream>
#include <mutex>
#include <set>
#include <string>

namespace tessarune::EngineMeter {

namespace {

std::mutex mutex;
double inCalls = 0; ///< seconds of processor time
std::size_t passCount = 0;
std::set<long> engineThreads;

std::set<long> threads() {
    std::set<long> ids;
    DIR* const folder = opendir("/proc/self/task");
    if (!folder)
        return ids;
    while (const dirent* entry = readdir(folder)) {
        long id = 0;
        const char* const end = entry->d_name + std::strlen(entry->d_name);
        if (std::from_chars(entry->d_name, end, id).ec == std::errc())
            ids.insert(id);
    }
    closedir(folder);
    return ids;
}

/// The processor time of a thread of this process, in user mode and in the kernel.
double threadSeconds(long id) {
    std::ifstream file("/proc/self/task/" + std::to_string(id) + "/schedstat");
    double nanoseconds = 0;
    file >> nanoseconds;
    return nanoseconds * 1e-9;
}

/// Treats threads that appear during a call as threads of the engine. It watches only calls during
/// which the rest of the program starts no thread.
class ThreadWatch {
  public:
    ~ThreadWatch() {
        const std::set<long> after = threads();
        std::lock_guard lock(mutex);
        for (const long id : after) {
            if (!before_.contains(id))
                engineThreads.insert(id);
        }
    }

  private:
    std::set<long> before_ = threads();
};

/// Adds the processor time of the calling thread, while this object exists, to that of the engine.
class CallWatch {
  public:
    ~CallWatch() {
        const double took = CPUClock::thread() - before_;
        std::lock_guard lock(mutex);
        inCalls += took;
    }

  private:
    double before_ = CPUClock::thread();
};

/// Replaces one of the engine's functions: `call` calls `original`, the replaced function, and
/// measures the call.
template <auto Member>
struct Timed;

template <typename Result, typename... Arguments, Result (*moonshine::Calls::*Member)(Arguments...)>
struct Timed<Member> {
    static inline Result (*original)(Arguments...) = nullptr;

    static Result call(Arguments... arguments) {
        const CallWatch watch;
        return original(arguments...);
    }
    static Result callThatStartsThreads(Arguments... arguments) {
        const ThreadWatch threadWatch;
        return call(arguments...);
    }
};

std::int32_t countedPass(moonshine::Calls::Handle transcriber, moonshine::Calls::Handle stream,
                         std::uint32_t flags, moonshine::Transcript** transcript) {
    {
        std::lock_guard lock(mutex);
        ++passCount;
    }
    return Timed<&moonshine::Calls::transcribeStream>::call(transcriber, stream, flags, transcript);
}

template <auto Member>
void watch(moonshine::Calls& calls) {
    Timed<Member>::original = calls.*Member;
    calls.*Member = Timed<Member>::call;
}

template <auto Member>
void watchThreads(moonshine::Calls& calls) {
    Timed<Member>::original = calls.*Member;
    calls.*Member = Timed<Member>::callThatStartsThreads;
}

} // namespace

std::shared_ptr<const MoonshineLibrary> library() {
    using moonshine::Calls;
    static const auto timed = [] {
        Calls calls = MoonshineLibrary::shared()->calls();
        watchThreads<&Calls::loadTranscriberFromFiles>(calls);
        watchThreads<&Calls::createStream>(calls);
        watch<&Calls::freeTranscriber>(calls);
        watch<&Calls::freeStream>(calls);
        watch<&Calls::startStream>(calls);
        watch<&Calls::stopStream>(calls);
        watch<&Calls::addAudioToStream>(calls);
        watch<&Calls::transcribeStream>(calls);
        calls.transcribeStream = countedPass;
        return std::make_shared<const MoonshineLibrary>(calls);
    }();
    return timed;
}

double seconds() {
    std::lock_guard lock(mutex);
    double sum = inCalls;
    for (const long id : engineThreads)
        sum += threadSeconds(id);
    return sum;
}

std::size_t ownThreads() {
    std::lock_guard lock(mutex);
    return engineThreads.size();
}

std::size_t passes() {
    std::lock_guard lock(mutex);
    return passCount;
}

} // namespace tessarune::EngineMeter
