#pragma once

#include "Tessarune/platform/speech-engine/MoonshineLibrary.h"
#include "tests/simulation/WorkingHost.h"

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tessarune::testing {

/// An engine that "hears" a prepared script of lines, through the same functions as the real one.
/// A line opens half a second after its start with the words spoken by then, and is complete a
/// tenth of a second after its end or when the stream is stopped.
///
/// One instance at a time: the functions of the C interface take no context pointer.
class ScriptedEngine {
  public:
    struct Spoken {
        std::string text;
        double start;
        double end;
    };
    struct Pass {
        double at; ///< host time
        double heard;
    };

    explicit ScriptedEngine(WorkingHost& host) : host_(host) { current = this; }
    ~ScriptedEngine() { current = nullptr; }

    std::shared_ptr<const MoonshineLibrary> library() const;

    /// The sample value that encodes this time of the session.
    static float sound(double at, bool isLoud) {
        return static_cast<float>(at * 1e-6 + (isLoud ? loud : 0));
    }

    std::vector<Spoken> script; ///< its times count from the start of the session
    double completionLag = 0.1;
    double passCost = 0;
    double stoppedInPass = 0;    ///< seconds that the process is stopped in the next pass
    double processorSeconds = 0; ///< what the passes so far have cost
    std::string dependencies;    ///< the list of a model's files, JSON
    std::string failing; ///< the call that fails: "load", "start", "add", "transcribe", "list"
    std::vector<Pass> passes;
    double heard = 0; ///< total seconds; sound given again to a new stream counts once
    std::size_t streamsMade = 0;
    std::size_t streamsOpen = 0;
    std::size_t modelsLoaded = 0;

  private:
    static constexpr double loud = 0.125;
    struct Stream {
        double begin = 0; ///< the time of the session at which its sound begins
        double heard = 0;
        bool stopped = false;
        std::vector<std::string> texts;
        std::vector<moonshine::Line> lines;
        moonshine::Transcript transcript{};
    };
    static ScriptedEngine* current;

    std::int32_t result(const char* call) const { return failing == call ? moonshine::unknown : 0; }
    std::int32_t transcribe(Stream& stream, moonshine::Transcript** transcript);

    WorkingHost& host_;
    std::map<std::int32_t, Stream> streams_;
};

inline ScriptedEngine* ScriptedEngine::current = nullptr;

inline std::int32_t ScriptedEngine::transcribe(Stream& stream, moonshine::Transcript** transcript) {
    passes.push_back({host_.now(), stream.begin + stream.heard});
    host_.worked += passCost + std::exchange(stoppedInPass, 0);
    processorSeconds += passCost;
    stream.texts.clear();
    stream.lines.clear();
    const double until = stream.begin + stream.heard;
    for (const Spoken& spoken : script) {
        if (spoken.end < stream.begin || until < spoken.start + 0.5)
            continue;
        moonshine::Line line{};
        line.isComplete = stream.stopped || until >= spoken.end + completionLag;
        const double said = (until - spoken.start) / (spoken.end - spoken.start);
        const std::size_t cut =
            said >= 1 ? std::string::npos
                      : spoken.text.find(' ', static_cast<std::size_t>(
                                                  said * static_cast<double>(spoken.text.size())));
        stream.texts.push_back(spoken.text.substr(0, cut));
        line.start = static_cast<float>(spoken.start - stream.begin);
        line.duration = static_cast<float>(std::min(until, spoken.end) - spoken.start);
        stream.lines.push_back(line);
    }
    for (std::size_t i = 0; i < stream.lines.size(); ++i)
        stream.lines[i].text = stream.texts[i].c_str();
    stream.transcript = {stream.lines.data(), stream.lines.size()};
    *transcript = &stream.transcript;
    return result("transcribe");
}

inline std::shared_ptr<const MoonshineLibrary> ScriptedEngine::library() const {
    using Handle = moonshine::Calls::Handle;
    moonshine::Calls calls{};
    calls.errorToString = [](std::int32_t) { return "out of order"; };
    calls.loadTranscriberFromFiles = [](const char*, std::uint32_t, const moonshine::Option*,
                                        std::uint64_t, std::int32_t) -> Handle {
        ++current->modelsLoaded;
        return current->result("load");
    };
    calls.freeTranscriber = [](Handle) {};
    calls.createStream = [](Handle, std::uint32_t) -> Handle {
        const auto handle = static_cast<Handle>(++current->streamsMade);
        ++current->streamsOpen;
        current->streams_[handle].begin = current->heard;
        return handle;
    };
    calls.freeStream = [](Handle, Handle stream) -> std::int32_t {
        --current->streamsOpen;
        current->streams_.erase(stream);
        return 0;
    };
    calls.startStream = [](Handle, Handle) { return current->result("start"); };
    calls.stopStream = [](Handle, Handle stream) -> std::int32_t {
        current->streams_[stream].stopped = true;
        return 0;
    };
    calls.addAudioToStream = [](Handle, Handle stream, const float* samples, std::uint64_t count,
                                std::int32_t rate, std::uint32_t) -> std::int32_t {
        Stream& to = current->streams_[stream];
        const auto first = static_cast<double>(samples[0]);
        if (to.heard == 0)
            to.begin = (first >= loud ? first - loud : first) * 1e6;
        to.heard += static_cast<double>(count) / rate;
        current->heard = std::max(current->heard, to.begin + to.heard);
        return current->result("add");
    };
    calls.transcribeStream = [](Handle, Handle stream, std::uint32_t,
                                moonshine::Transcript** transcript) {
        return current->transcribe(current->streams_[stream], transcript);
    };
    calls.getDependencies = [](const char*, const moonshine::Option*, std::uint64_t, char** json) {
        *json = current->dependencies.data();
        return current->result("list");
    };
    calls.freeBuffer = [](void*) {};
    return std::make_shared<const MoonshineLibrary>(calls);
}

} // namespace tessarune::testing
