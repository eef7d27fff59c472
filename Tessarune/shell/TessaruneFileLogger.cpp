#include "Tessarune/shell/TessaruneFileLogger.h"

#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/JSON.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <vector>

namespace tessarune {

namespace {

using Json = JSON::Value;

constexpr double secondsADay = 86400;
constexpr int daysKept = 14;
constexpr std::string_view namePrefix = "runtime-";
constexpr std::string_view nameSuffix = ".jsonl";

std::string dayStamp(double wallClock) {
    const auto seconds = static_cast<std::time_t>(wallClock);
    std::tm local{};
    localtime_r(&seconds, &local);
    char stamp[16];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%d", &local);
    return stamp;
}

std::string fileName(const std::string& day) {
    return std::string(namePrefix) + day + std::string(nameSuffix);
}

void put(Json& object, const std::string& name, const LogValue& value) {
    if (const auto* number = std::get_if<double>(&value); number && !std::isfinite(*number))
        return;
    std::visit([&](const auto& plain) { object[name] = plain; }, value);
}

} // namespace

bool TessaruneFileLogger::isLogFile(std::string_view name) {
    return name.starts_with(namePrefix) && name.ends_with(nameSuffix);
}

class TessaruneFileLogger::Writer {
  public:
    Writer(FileSystem& files, std::filesystem::path folder)
        : files_(files), folder_(std::move(folder)) {}

    // Any thread
    std::atomic<std::size_t> queued{0};
    std::atomic<std::int64_t> lost{0}; ///< since the last queued event

    void write(double wallClock, const std::string& line) {
        try {
            open(dayStamp(wallClock));
            const bool isAfterBrokenLine = std::exchange(isLineBroken_, true);
            file_->append(isAfterBrokenLine ? "\n" + line : line);
            isLineBroken_ = false;
            isFailing_ = false;
        } catch (const std::exception& error) {
            file_.reset();
            if (std::exchange(isFailing_, true))
                return;
            const std::string text = error.what();
            TessaruneLog::app.fault([&] { return "Tessarune file logger failed: " + text; });
        }
    }

    void prune(double wallClock) {
        const std::string oldestKept = fileName(dayStamp(wallClock - daysKept * secondsADay));
        try {
            for (const auto& name : files_.list(folder_)) {
                if (isLogFile(name) && name < oldestKept)
                    files_.removeFile(folder_ / name);
            }
        } catch (const std::exception& error) {
            const std::string text = error.what();
            TessaruneLog::app.notice(
                [&] { return "Tessarune file logger could not prune: " + text; });
        }
    }

    void deleteLines(const std::set<std::string>& needles) {
        forEachFile([&](const auto& path, bool isNewest) { deleteLines(path, isNewest, needles); });
    }

    void deleteAll() {
        forEachFile([&](const auto& path, bool) { files_.remove(path); });
    }

  private:
    void forEachFile(const std::function<void(const std::filesystem::path&, bool)>& change) {
        file_.reset();
        try {
            std::vector<std::string> names = files_.list(folder_);
            std::erase_if(names, [](const std::string& name) { return !isLogFile(name); });
            for (const auto& name : names)
                change(folder_ / name, name == names.back());
        } catch (const std::exception& error) {
            const std::string text = error.what();
            TessaruneLog::app.fault([&] { return "Tessarune file logger failed: " + text; });
        }
    }

    void open(const std::string& day) {
        if (file_ && day == day_)
            return;
        files_.createDirectories(folder_);
        file_ = files_.openForAppending(folder_ / fileName(day));
        day_ = day;
    }

    void deleteLines(const std::filesystem::path& path, bool isNewest,
                     const std::set<std::string>& needles) {
        const std::string all = files_.read(path);
        std::string kept;
        for (std::size_t at = 0; at < all.size();) {
            const std::size_t end = std::min(all.find('\n', at), all.size() - 1) + 1;
            const std::string_view line = std::string_view(all).substr(at, end - at);
            const bool matches =
                std::any_of(needles.begin(), needles.end(), [&](const auto& needle) {
                    return line.find(needle) != std::string_view::npos;
                });
            if (!matches)
                kept += line;
            at = end;
        }
        if (kept.size() == all.size())
            return;
        if (!isNewest) {
            files_.writeAtomically(path, kept);
            return;
        }
        // Not replaced, because another program may have the file open for appending. A kept line
        // is overwritten only after it is written nearer to the beginning, so a failure loses none.
        files_.openForAppending(path)->overwrite(0, kept);
        files_.truncate(path, kept.size());
    }

    FileSystem& files_;
    std::filesystem::path folder_;
    std::unique_ptr<AppendFile> file_;
    std::string day_;
    bool isFailing_ = false;
    bool isLineBroken_ = false; // a failed write may have left a partial line
};

TessaruneFileLogger::TessaruneFileLogger(Host& host, FileSystem& files, TessarunePaths paths)
    : host_(host),
      writer_(std::make_shared<Writer>(files, paths.logs())),
      queue_(host.serialQueue("Tessarune.FileLogger", QueuePriority::utility)) {}

TessaruneFileLogger::~TessaruneFileLogger() = default;

void TessaruneFileLogger::bootstrap(LogFields fields) {
    pruneOldLogs();
    important("app.bootstrap", std::move(fields));
}

void TessaruneFileLogger::event(std::string name, LogFields fields, Importance importance,
                                std::source_location source) {
    const DiagnosticsLevel level = TessaruneLog::diagnosticsLevel();
    if (level == DiagnosticsLevel::off)
        return;
    if (importance == Importance::routine && !writesRoutineBreadcrumbs(level))
        return;
    constexpr std::size_t maximumQueued = 4096;
    if (writer_->queued >= maximumQueued) { // the disk does not keep up
        ++writer_->lost;
        return;
    }
    ++writer_->queued;
    if (const std::int64_t lost = writer_->lost.exchange(0); lost > 0)
        fields.add("lostEventsBefore", lost);
    const double wallClock = host_.wallClock();
    const bool mainThread = host_.isOnMainQueue();
    queue_->async([writer = writer_, wallClock, mainThread, source, name = std::move(name),
                   fields = std::move(fields)] {
        Json object = Json::object();
        for (const auto& [field, value] : fields)
            put(object, field, value);
        object["event"] = name;
        object["t"] = wallClock;
        object["mainThread"] = mainThread;
        // An event about a sound source or a language keeps its own field "source".
        object[object.contains("source") ? "sourceLocation" : "source"] =
            std::filesystem::path(source.file_name()).filename().string() + ":" +
            std::to_string(source.line());
        if (const auto line = JSON::line(object))
            writer->write(wallClock, *line + "\n");
        --writer->queued;
    });
}

void TessaruneFileLogger::deleteEntries(const std::set<std::string>& matchingRecordingIDs,
                                        const std::set<std::string>& matchingText) {
    std::set<std::string> needles;
    for (const auto* texts : {&matchingRecordingIDs, &matchingText}) {
        for (const auto& text : *texts) {
            if (text.empty())
                continue;
            // The text as it appears inside a JSON string, without the quotes.
            const std::string quoted = JSON::line(Json(text)).value();
            needles.insert(quoted.substr(1, quoted.size() - 2));
        }
    }
    if (needles.empty())
        return;
    queue_->sync([&] { writer_->deleteLines(needles); });
}

void TessaruneFileLogger::deleteAllLogs() {
    queue_->sync([&] { writer_->deleteAll(); });
}

void TessaruneFileLogger::pruneOldLogs() {
    queue_->async([writer = writer_, now = host_.wallClock()] { writer->prune(now); });
}

void TessaruneFileLogger::flush() {
    queue_->sync([] {});
}

} // namespace tessarune
