#include "Tessarune/ui/history/UsageModel.h"

#include "Tessarune/history/DurationTextFormatter.h"
#include "Tessarune/ui/history/HistoryTexts.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/DateText.h"
#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

enum Measure { listeningTime, sessionCount, wordCount };

QString usageValue(const UsagePeriod& period, int measure) {
    switch (measure) {
    case sessionCount:
        return QString::number(period.sessions);
    case wordCount:
        return QString::number(period.words);
    default:
        return QString::fromStdString(DurationTextFormatter::compact(period.listeningSeconds));
    }
}

QString usageDate(const UsagePeriod& period, std::string_view pattern) {
    // 12 hours after the start of a period it is still the period's first day, even if the clocks
    // change on that day.
    constexpr double noon = 12 * 3600.0;
    return QString::fromStdString(
        DateText::formatted(period.start + noon, localized(pattern), localized("zh_Hans_CN")));
}

int latestUsed(const std::vector<UsagePeriod>& periods, double now) {
    const int last = static_cast<int>(periods.size()) - 1;
    for (int row = last; row >= 0; --row) {
        const UsagePeriod& period = periods[static_cast<std::size_t>(row)];
        if (period.start <= now && (period.sessions > 0 || period.listeningSeconds > 0))
            return row;
    }
    return last;
}

} // namespace

UsageModel::UsageModel(const HistoryWindowEnvironment& environment)
    : environment_(environment),
      queue_(environment.host.serialQueue("Tessarune.history.usage", QueuePriority::utility)) {
    for (const auto name : {NotificationName::recordingCatalogDidChange,
                            NotificationName::recordingTranscriptDidUpdate})
        observations_.push_back(lifeline_.observe(environment_.notifications, name,
                                                  environment_.host,
                                                  [](UsageModel& model, const NotificationObject&) {
                                                      model.isDue_ = true;
                                                      model.readIfNeeded();
                                                  }));
}

UsageModel::~UsageModel() {
    observations_.clear();
    queue_->sync([] {});
}

void UsageModel::setOpen(bool isOpen) {
    if (std::exchange(isOpen_, isOpen) == isOpen)
        return;
    Q_EMIT openChanged();
    readIfNeeded();
}

void UsageModel::readIfNeeded() {
    if (isOpen_ && isDue_ && !std::exchange(isReading_, true))
        spawn(Executor::main(environment_.host), read());
}

Task<void> UsageModel::read() {
    const auto held = lifeline_.held();
    Host& host = environment_.host;
    RecordingCatalog& catalog = environment_.catalog;
    FileSystem& files = environment_.files;
    const auto queue = queue_;
    while (isOpen_ && isDue_) {
        isDue_ = false;
        std::vector<UsageStatistics::Session> sessions;
        std::vector<UsagePeriod> periods;
        std::string problem;
        const UsagePeriodKind kind = kind_;
        co_await runOn(Executor::queue(host, queue), [&] {
            sessions = UsageStatistics::sessions(catalog, files);
            periods = UsageStatistics::periods(sessions, kind); // takes long for many years
            problem = catalog.readingProblem();
        });
        if (!*held)
            co_return;
        sessions_ = std::move(sessions);
        problem_ = std::move(problem);
        isRead_ = true;
        update(kind == kind_ ? std::move(periods) : UsageStatistics::periods(sessions_, kind_));
    }
    isReading_ = false;
}

void UsageModel::update(std::vector<UsagePeriod> periods) {
    total_ = UsageStatistics::total(periods);
    latest_ = latestUsed(periods, environment_.host.wallClock());
    show(std::move(periods), [](const UsagePeriod& a, const UsagePeriod& b) {
        return a.start == b.start && a.end == b.end;
    });
    updateScale();
}

void UsageModel::updateScale() {
    maximum_ = 0;
    for (const UsagePeriod& period : rows())
        maximum_ = std::max(maximum_, valueOf(period));
    announceAll({FractionRole, GroupRole});
    Q_EMIT changed();
}

double UsageModel::valueOf(const UsagePeriod& period) const {
    switch (measure_) {
    case sessionCount:
        return period.sessions;
    case wordCount:
        return static_cast<double>(period.words);
    default:
        return period.listeningSeconds;
    }
}

void UsageModel::setPeriod(int period) {
    if (period < 0 || period >= periods().size() || period == this->period())
        return;
    kind_ = static_cast<UsagePeriodKind>(period);
    update(UsageStatistics::periods(sessions_, kind_));
}

void UsageModel::setMeasure(int measure) {
    if (measure < 0 || measure >= measures().size() || measure == measure_)
        return;
    measure_ = measure;
    updateScale();
}

QStringList UsageModel::periods() const {
    return {historyText("按日"), historyText("按周"), historyText("按月")};
}

QStringList UsageModel::measures() const {
    return {historyText("收听时长"), historyText("会话"), historyText("词数")};
}

QStringList UsageModel::totals() const {
    QStringList all;
    for (const int measure : {listeningTime, sessionCount, wordCount})
        all << usageValue(total_, measure);
    return all;
}

QString UsageModel::scale() const {
    UsagePeriod top;
    top.listeningSeconds = maximum_;
    top.sessions = static_cast<int>(measure_ == sessionCount ? maximum_ : 0);
    top.words = static_cast<std::int64_t>(measure_ == wordCount ? maximum_ : 0);
    return usageValue(top, measure_);
}

QString UsageModel::uncounted() const {
    return QString::fromStdString(UsageStatistics::problemOf(sessions_));
}

QString UsageModel::emptyTitle() const {
    if (count() > 0 || !isRead_)
        return {};
    return problem_.empty() ? historyText("还没有可以统计的录音") : historyText("无法读取历史记录");
}

QString UsageModel::emptyText() const {
    if (count() > 0 || !isRead_)
        return {};
    return problem_.empty() ? historyText("开始字幕或导入文件后，这里会显示每天的收听时长。")
                            : QString::fromStdString(problem_);
}

/// Whether the row is the first of its group. Days and weeks are grouped by month, months by year.
bool UsageModel::beginsGroup(int row) const {
    if (row == 0)
        return true;
    const auto group = [&](int place) {
        constexpr std::size_t yearLength = sizeof "2025" - 1;
        constexpr std::size_t monthLength = sizeof "2025-10" - 1;
        return at(place)->date.substr(0,
                                      kind_ == UsagePeriodKind::month ? yearLength : monthLength);
    };
    return group(row) != group(row - 1);
}

QVariant UsageModel::data(const QModelIndex& index, int role) const {
    const UsagePeriod* const period = at(index.row());
    if (!period)
        return {};
    const bool isMonth = kind_ == UsagePeriodKind::month;
    switch (role) {
    case FractionRole:
        return maximum_ > 0 ? valueOf(*period) / maximum_ : 0.0;
    case LabelRole:
        return usageDate(*period, isMonth ? "M月" : "d");
    case GroupRole:
        if (!beginsGroup(index.row()))
            return QString();
        return usageDate(*period, isMonth ? "yyyy年" : "yyyy年M月");
    case NameRole:
        if (kind_ == UsagePeriodKind::week)
            return historyText("%@起的一周", {usageDate(*period, "yyyy年M月d日").toStdString()});
        return usageDate(*period, isMonth ? "yyyy年M月" : "yyyy年M月d日");
    case ValueRole:
        return historyText("收听 %@，%lld 次会话，%lld 个词",
                           {DurationTextFormatter::compact(period->listeningSeconds),
                            std::to_string(period->sessions), std::to_string(period->words)});
    default:
        return {};
    }
}

QHash<int, QByteArray> UsageModel::roleNames() const {
    return {{FractionRole, "fraction"},
            {LabelRole, "label"},
            {GroupRole, "group"},
            {NameRole, "name"},
            {ValueRole, "figures"}};
}

} // namespace tessarune
