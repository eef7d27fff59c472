#include "Tessarune/ui/settings/DiagnosticsRunsModel.h"

#include "Tessarune/diagnostics/DiagnosticsCatalog.h"
#include "Tessarune/diagnostics/RunVerification.h"
#include "TessaruneCore/text/DateText.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <QLocale>
#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

namespace tessarune {

namespace {

using Content = DiagnosticsRunLayout::Content;

QString runText(std::string_view key) {
    return QString::fromStdString(localized(key));
}

std::string runTitle(const DiagnosticsRunContents& run) {
    return run.startedWall
               ? DateText::formatted(*run.startedWall, "yyyy-MM-dd HH:mm:ss", "en_US_POSIX")
               : run.id;
}

std::string runAbout(const DiagnosticsRunContents& run) {
    constexpr double secondsAMinute = 60;
    std::vector<std::string> parts;
    if (!run.level.empty())
        parts.push_back(localized("级别 %@", {run.level}));
    if (run.durationSeconds)
        parts.push_back(
            localized("%@ 分钟", {Text::fixed(*run.durationSeconds / secondsAMinute, 1)}));
    else if (!run.isFinished)
        parts.push_back(localized("未完成"));
    if (run.isFinished)
        parts.push_back(localized("%lld 条字幕", {std::to_string(run.committedSegments)}));
    parts.push_back(
        QLocale()
            .formattedDataSize(static_cast<qint64>(run.bytes()), 1, QLocale::DataSizeSIFormat)
            .toStdString());
    if (run.lostRecords > 0)
        parts.push_back(localized("丢失 %lld 条记录", {std::to_string(run.lostRecords)}));
    return Text::joined(parts, " · ");
}

std::string runHolds(const DiagnosticsRunContents& run) {
    constexpr std::pair<Content, std::string_view> names[] = {
        {Content::lifecycle, localizationKey("启停记录")},
        {Content::captions, localizationKey("字幕文字")},
        {Content::recognition, localizationKey("识别事件")},
        {Content::translation, localizationKey("翻译记录")},
        {Content::display, localizationKey("显示记录")},
        {Content::performance, localizationKey("性能样本")},
        {Content::idle, localizationKey("停止后的内存")},
        {Content::refinement, localizationKey("重新转写记录")},
        {Content::report, localizationKey("报告")}};
    std::vector<std::string> held;
    for (const auto& [content, name] : names) {
        if (run.has(content))
            held.push_back(localized(name));
    }
    return Text::joined(held, localized(", "));
}

} // namespace

DiagnosticsRunsModel::DiagnosticsRunsModel(const SettingsWindowEnvironment& environment)
    : environment_(environment),
      queue_(
          environment.host.serialQueue("Tessarune.DiagnosticsRunsModel", QueuePriority::utility)),
      link_(std::make_shared<Link>(Link{this})) {
    observations_.follow(environment.session.sessionPhase, [this] { Q_EMIT listChanged(); });
}

DiagnosticsRunsModel::~DiagnosticsRunsModel() {
    link_->model = nullptr;
}

void DiagnosticsRunsModel::inBackground(std::function<Apply()> work) {
    queue_->async([&host = environment_.host, link = link_, work = std::move(work)] {
        host.post([link, apply = work()] {
            if (link->model)
                apply(*link->model);
        });
    });
}

void DiagnosticsRunsModel::refresh() {
    inBackground([&disk = environment_.files, paths = environment_.paths] {
        std::vector<DiagnosticsRunContents> runs;
        for (const DiagnosticsRun& run : DiagnosticsCatalog(disk, paths).runs())
            runs.push_back(DiagnosticsRunContents::read(disk, run.directory));
        return [runs = std::move(runs)](DiagnosticsRunsModel& model) {
            model.runs_ = runs;
            model.isRead_ = true;
            Q_EMIT model.listChanged();
        };
    });
}

const DiagnosticsRunContents* DiagnosticsRunsModel::at(int row) const {
    return row >= 0 && row < static_cast<int>(runs_.size()) ? &runs_[static_cast<std::size_t>(row)]
                                                            : nullptr;
}

QVariantList DiagnosticsRunsModel::runs() const {
    const LiveSessionPhase phase = *environment_.session.sessionPhase;
    const bool isAtRest = phase == LiveSessionPhase::idle || phase == LiveSessionPhase::failed;
    QVariantList all;
    for (const DiagnosticsRunContents& run : runs_)
        all << QVariantMap{{"title", QString::fromStdString(runTitle(run))},
                           {"about", QString::fromStdString(runAbout(run))},
                           {"holds", QString::fromStdString(runHolds(run))},
                           {"canReplay", run.isFull && run.isFinished},
                           {"canRemove", run.isFinished || isAtRest}};
    return all;
}

int DiagnosticsRunsModel::messageRow() const {
    const auto run = std::ranges::find(runs_, messageRun_, &DiagnosticsRunContents::directory);
    return run == runs_.end() ? -1 : static_cast<int>(run - runs_.begin());
}

void DiagnosticsRunsModel::tell(const std::filesystem::path& run, const QString& message,
                                bool isGood, const QString& replay) {
    messageRun_ = run;
    message_ = message;
    isGood_ = isGood;
    replay_ = replay;
    Q_EMIT told();
}

void DiagnosticsRunsModel::forget() {
    message_.clear();
    replay_.clear();
}

void DiagnosticsRunsModel::replayRun(int row) {
    const DiagnosticsRunContents* const run = at(row);
    if (!run)
        return;
    inBackground([&disk = environment_.files, directory = run->directory] {
        return [directory,
                result = RunVerification::verify(disk, directory)](DiagnosticsRunsModel& model) {
            model.tell(directory,
                       QString::fromStdString(
                           result.matches()
                               ? localized("回放的 %lld 条字幕与当时的完全一致。",
                                           {std::to_string(result.rows)})
                               : localized("回放与当时的字幕不一致：%@", {result.problem})),
                       result.matches(), QString::fromStdString(result.text));
        };
    });
}

void DiagnosticsRunsModel::openFolder(int row) {
    if (const DiagnosticsRunContents* const run = at(row);
        run && !environment_.openFolder(run->directory))
        tell(run->directory, runText("无法打开文件夹。"), false);
}

void DiagnosticsRunsModel::remove(int row) {
    const DiagnosticsRunContents* const run = at(row);
    if (!run)
        return;
    const DataFolderLease lease = environment_.leaseDataFolder();
    if (!lease.hold) {
        tell(run->directory, QString::fromStdString(lease.problem), false);
        return;
    }
    inBackground([&disk = environment_.files, paths = environment_.paths,
                  directory = run->directory, hold = lease.hold] {
        const bool isGone = DiagnosticsCatalog(disk, paths).remove({directory, 0});
        return [isGone, directory](DiagnosticsRunsModel& model) {
            model.tell(directory, isGone ? QString() : runText("诊断记录无法删除。"), isGone);
        };
    });
    refresh();
}

QVariantMap DiagnosticsRunsModel::texts() const {
    return {{"title", runText("诊断记录")}, {"none", runText("还没有诊断记录。")},
            {"replay", runText("回放")},    {"open", runText("打开文件夹")},
            {"remove", runText("删除")},    {"sure", runText("确定删除？")}};
}

} // namespace tessarune
