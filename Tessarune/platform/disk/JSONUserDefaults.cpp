#include "Tessarune/platform/disk/JSONUserDefaults.h"

#include "Tessarune/platform/disk/FileLock.h"
#include "TessaruneCore/UUID.h"
#include "TessaruneCore/diagnostics/TessaruneLog.h"
#include "TessaruneCore/text/JSON.h"
#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <charconv>
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

/// Puts texts in place of all numbers beyond the range of a double: `mark`, and then the number as
/// it is written. No JSON reader of the program can hold such a number, and it must neither make
/// the other settings unreadable nor be lost. `mark` must not occur in any other text.
std::string withMarkedNumbers(std::string_view json, const std::string& mark) {
    constexpr std::string_view inNumbers = "+-.0123456789Ee";
    std::string marked;
    bool isInString = false;
    for (std::size_t at = 0; at < json.size();) {
        const char c = json[at];
        std::size_t length = isInString && c == '\\' ? 2 : 1;
        bool isTooLarge = false;
        if (c == '"') {
            isInString = !isInString;
        } else if (!isInString && (c == '-' || (c >= '0' && c <= '9'))) {
            length = std::min(json.find_first_not_of(inNumbers, at), json.size()) - at;
            const char* const end = json.data() + at + length;
            double number = 0;
            const auto read = std::from_chars(json.data() + at, end, number);
            isTooLarge = read.ec == std::errc::result_out_of_range && read.ptr == end;
        }
        const std::string_view token = json.substr(at, length);
        if (isTooLarge)
            marked.append("\"").append(mark).append(token) += '"';
        else
            marked += token;
        at += length;
    }
    return marked;
}

/// Puts the numbers back into a text that the JSON library has written.
std::string withPlainNumbers(std::string_view json, const std::string& mark) {
    std::string plain;
    for (;;) {
        const std::size_t found = json.find('"' + mark);
        plain += json.substr(0, found);
        if (found == std::string_view::npos)
            return plain;
        json.remove_prefix(found + 1 + mark.size());
        const std::size_t end = json.find('"');
        plain += json.substr(0, end);
        json.remove_prefix(end + 1);
    }
}

} // namespace

struct JSONUserDefaults::Content {
    Json object = Json::object();
    std::string numberMark; ///< of `withMarkedNumbers`; empty if no number had to be marked
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
        const std::string text = files_.read(file_);
        Json parsed = JSON::parse(text);
        std::string mark;
        if (parsed.is_discarded()) {
            mark = UUID::random().text();
            parsed = JSON::parse(withMarkedNumbers(text, mark));
        }
        if (!parsed.is_object())
            throw std::runtime_error(
                localized("%@ does not contain a JSON object", {file_.string()}));
        *content_ = {std::move(parsed), std::move(mark)};
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
        std::string text = content_->object.dump(2, ' ', false, Json::error_handler_t::replace);
        if (!content_->numberMark.empty())
            text = withPlainNumbers(text, content_->numberMark);
        files_.writeAtomically(file_, text + "\n");
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
    if (!found->is_string())
        return std::nullopt;
    std::string text = found->get<std::string>();
    const bool isNumber = !content_->numberMark.empty() && text.starts_with(content_->numberMark);
    return isNumber ? std::nullopt : std::optional<SettingValue>(std::move(text));
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
