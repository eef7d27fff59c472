#include "Tessarune/platform/disk/JSONUserDefaults.h"

#include "Tessarune/platform/disk/FileLock.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/JSON.h"
#include "TessaruneCore/text/Localization.h"

#include <system_error>
#include <utility>

namespace tessarune {

using Json = JSON::Value;

namespace {

/// How long to wait for the lock. After that, the change is written without the lock, because a
/// program that is suspended during a write must not block others.
constexpr double longestWaitSeconds = 5;

/// Follows symbolic links, so that a link to settings elsewhere is kept and its target is replaced.
/// Returns `file` itself if the target is a device or another special file, so that only
/// the link can be replaced or moved, not the device.
std::filesystem::path linkedFile(const std::filesystem::path& file) {
    constexpr int maximumLinks = 40; // the limit of the kernel
    std::error_code error;
    std::filesystem::path target = file;
    for (int i = 0; i < maximumLinks && std::filesystem::is_symlink(target, error); ++i)
        target = target.parent_path() / std::filesystem::read_symlink(target, error);
    const bool isSpecial =
        std::filesystem::exists(target, error) && !std::filesystem::is_regular_file(target, error);
    return isSpecial ? file : target;
}

} // namespace

struct JSONUserDefaults::Content {
    Json object = Json::object();
};

JSONUserDefaults::JSONUserDefaults(FileSystem& files, std::filesystem::path file)
    : files_(files), file_(linkedFile(file)), content_(std::make_unique<Content>()) {
    load();
}

JSONUserDefaults::~JSONUserDefaults() = default;

void JSONUserDefaults::watch(Host& host) {
    try {
        if (file_.has_parent_path())
            files_.createDirectories(file_.parent_path());
        watch_ = std::make_unique<FileWatch>(file_, host, [this] { handleChange(); });
    } catch (const std::exception& error) {
        const std::string reason = error.what();
        TessaruneLog::storage.notice([&] { return "Tessarune settings not watched: " + reason; });
    }
}

void JSONUserDefaults::handleChange() {
    // After a failed write the memory is newer than the file.
    if (!problem_.empty() && !isFileUnreadable_)
        return;
    load();
    if (onChange_)
        onChange_();
}

void JSONUserDefaults::load() {
    if (!files_.exists(file_)) {
        if (std::exchange(isFileUnreadable_, false)) // the user has removed it
            problem_.clear();
        return;
    }
    try {
        Json parsed = JSON::parse(files_.read(file_));
        if (!parsed.is_object())
            throw std::runtime_error(
                localized("%@ does not contain a JSON object", {file_.string()}));
        content_->object = std::move(parsed);
        isFileUnreadable_ = false;
        problem_.clear();
    } catch (const std::exception& error) {
        isFileUnreadable_ = true;
        problem_ = error.what();
        // Not a fault: the program tells the user in its own words.
        TessaruneLog::storage.notice(
            [&] { return "Tessarune settings not understood: " + problem_; });
    }
}

void JSONUserDefaults::store() {
    if (isFileUnreadable_)
        return;
    try {
        if (file_.has_parent_path())
            files_.createDirectories(file_.parent_path());
        files_.writeAtomically(
            file_, content_->object.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
        problem_.clear();
    } catch (const std::exception& error) {
        problem_ = error.what();
        TessaruneLog::storage.fault([&] { return "Tessarune settings not saved: " + problem_; });
    }
}

void JSONUserDefaults::set(std::string_view key, SettingValue value) {
    // Keeps other programs from writing between the read and the write.
    const auto lock = FileLock::waitForFolder(file_.parent_path(), longestWaitSeconds);
    const std::string before = problem_;
    // After a failed write the memory is newer than the file.
    if (problem_.empty() || isFileUnreadable_)
        load();
    std::visit([&](auto& plain) { content_->object[std::string(key)] = std::move(plain); }, value);
    store();
    if (problem_ != before && onProblem)
        onProblem();
}

std::optional<SettingValue> JSONUserDefaults::value(std::string_view key) const {
    const auto found = content_->object.find(key);
    if (found == content_->object.end())
        return std::nullopt;
    if (found->is_boolean())
        return found->get<bool>();
    if (found->is_number_integer())
        return found->get<std::int64_t>();
    if (found->is_number())
        return found->get<double>();
    if (found->is_string())
        return found->get<std::string>();
    return std::nullopt;
}

bool JSONUserDefaults::isUnreadable(std::string_view key) const {
    return content_->object.contains(key) ? !value(key) : isFileUnreadable_;
}

std::filesystem::path JSONUserDefaults::keepAside() {
    if (!isFileUnreadable_)
        return {};
    std::filesystem::path aside = file_;
    aside += ".unreadable";
    for (int number = 2; files_.exists(aside); ++number)
        aside.replace_filename(file_.filename().string() + ".unreadable-" + std::to_string(number));
    try {
        files_.rename(file_, aside);
    } catch (const std::exception& error) {
        problem_ = error.what();
        return {};
    }
    isFileUnreadable_ = false;
    problem_.clear();
    return aside;
}

} // namespace tessarune
