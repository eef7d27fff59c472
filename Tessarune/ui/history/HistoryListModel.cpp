#include "Tessarune/ui/history/HistoryListModel.h"

#include "Tessarune/history/LocalDay.h"
#include "Tessarune/ui/history/HistoryTexts.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/DateText.h"
#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

using Entry = HistoryListReader::Entry;
using EntryPtr = HistoryListReader::EntryPtr;
using Step = HistoryRefinementService::Progress::Step;

/// The pause after a reading of the catalog. Several changes during a pause cause one reading.
constexpr double settleSeconds = 0.05;

QString dayOf(const HistoryItem& item, double now) {
    const auto day = [](double time) {
        return DateText::formatted(time, localized("yyyy年M月d日"), localized("zh_Hans_CN"));
    };
    if (item.date == day(now))
        return historyText("今天");
    if (item.date == day(LocalDay::start(now, -1)))
        return historyText("昨天");
    return QString::fromStdString(item.date);
}

bool isSameRecording(const EntryPtr& a, const EntryPtr& b) {
    return a->item.id == b->item.id;
}

/// Adds to `different` the recordings whose entries differ between `before` and `now`.
template <typename Value>
void addDifferences(const std::map<UUID, Value>& before, const std::map<UUID, Value>& now,
                    std::set<UUID>& different) {
    for (const auto& [id, value] : before) {
        const auto same = now.find(id);
        if (same == now.end() || !(same->second == value))
            different.insert(id);
    }
    for (const auto& [id, value] : now) {
        if (!before.contains(id))
            different.insert(id);
    }
}

} // namespace

HistoryListModel::HistoryListModel(const HistoryWindowEnvironment& environment)
    : environment_(environment),
      queue_(environment.host.serialQueue("Tessarune.history.list", QueuePriority::utility)),
      reader_(std::make_shared<HistoryListReader>(environment.catalog, environment.files)) {
    follow();
    reload();
    awaitMidnight();
}

HistoryListModel::~HistoryListModel() {
    notifications_.clear();
    midnight_.cancel();
    queue_->sync([] {});
}

void HistoryListModel::follow() {
    const auto observe = [this](std::string_view name, auto act) {
        notifications_.push_back(
            lifeline_.observe(environment_.notifications, name, environment_.host, act));
    };
    observe(NotificationName::recordingCatalogDidChange,
            [](HistoryListModel& model, const NotificationObject&) { model.reload(); });
    observe(NotificationName::recordingTranscriptDidUpdate,
            [](HistoryListModel& model, const NotificationObject& object) {
                if (const UUID* id = std::get_if<UUID>(&object))
                    model.transcriptChanged(*id);
            });
    observe(NotificationName::searchIndexDidChange,
            [](HistoryListModel& model, const NotificationObject&) { model.search(); });
    const HistoryRefinementService& refinement = environment_.refinement;
    observations_.follow(refinement.jobs(), [this] { refinementsChanged(); });
    observations_.follow(refinement.failures(), [this] { refinementsChanged(); });
    refinementsChanged();
    if (environment_.liveDuration)
        observations_.followChanges(*environment_.liveDuration, [this](double) {
            if (const auto running = environment_.liveRecording())
                announce(rowOf(*running), {DurationRole});
        });
}

/// Announces new headings at midnight, when "today" becomes another day.
void HistoryListModel::awaitMidnight() {
    const double now = environment_.host.wallClock();
    midnight_ = environment_.host.after(std::max(LocalDay::start(now, 1) - now, 0.0) + 1,
                                        lifeline_.calling([](HistoryListModel& model) {
                                            model.announceAll({DayRole});
                                            model.awaitMidnight();
                                        }));
}

void HistoryListModel::transcriptChanged(const UUID& id) {
    queue_->async([reader = reader_, id] { reader->forget(id); });
    reload();
}

/// Announces only rows that look different, because the list may be long and progress is frequent.
void HistoryListModel::refinementsChanged() {
    std::set<UUID> different;
    addDifferences(jobs_, *environment_.refinement.jobs(), different);
    addDifferences(failures_, *environment_.refinement.failures(), different);
    jobs_ = *environment_.refinement.jobs();
    failures_ = *environment_.refinement.failures();
    for (const UUID& id : different)
        announce(rowOf(id), {FailedRole, StateTextRole, ProgressRole});
}

void HistoryListModel::reload() {
    isReloadDue_ = true;
    if (!std::exchange(isReading_, true))
        spawn(Executor::main(environment_.host), load());
}

Task<void> HistoryListModel::load() {
    const auto held = lifeline_.held();
    Host& host = environment_.host;
    RecordingCatalog& catalog = environment_.catalog;
    const auto reader = reader_;
    const auto queue = queue_;
    while (isReloadDue_) {
        isReloadDue_ = false;
        std::vector<EntryPtr> entries;
        std::string problem;
        co_await runOn(Executor::queue(host, queue), [&] {
            entries = reader->entries();
            problem = catalog.readingProblem();
        });
        if (!*held)
            co_return;
        all_ = std::move(entries);
        problem_ = std::move(problem);
        isLoading_ = false;
        update();
        Task<bool> settling = sleep(Executor::main(host), settleSeconds);
        co_await settling;
        if (!*held)
            co_return;
    }
    isReading_ = false;
}

void HistoryListModel::setQuery(const QString& query) {
    words_ = query.toCaseFolded().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    query_ = SearchQuery::parse(query.toStdString());
    search();
    update();
}

/// The recordings that the previous search found stay listed until this search has a result.
void HistoryListModel::search() {
    ++searches_;
    if (query_.isEmpty())
        found_.clear();
    else
        spawn(Executor::main(environment_.host), find(query_));
}

Task<void> HistoryListModel::find(SearchQuery query) {
    const auto held = lifeline_.held();
    const int number = searches_;
    Task<TranscriptSearch::Found> finding = environment_.search.find(std::move(query));
    const TranscriptSearch::Found found = co_await finding;
    if (!*held || searches_ != number)
        co_return;
    found_ = std::unordered_set<UUID>(found.recordings.begin(), found.recordings.end());
    update();
}

void HistoryListModel::setHidden(const UUID& id, bool isHidden) {
    if (isHidden)
        hidden_.insert(id);
    else
        hidden_.erase(id);
    update();
}

bool HistoryListModel::isListed(const Entry& entry) const {
    if (hidden_.contains(entry.item.id))
        return false;
    return words_.isEmpty() || found_.contains(entry.item.id) ||
           std::ranges::all_of(words_,
                               [&](const QString& word) { return entry.searched.contains(word); });
}

void HistoryListModel::update() {
    std::vector<EntryPtr> now;
    std::ranges::copy_if(all_, std::back_inserter(now),
                         [this](const EntryPtr& entry) { return isListed(*entry); });
    show(std::move(now), isSameRecording);
    Q_EMIT updated();
}

const HistoryItem* HistoryListModel::item(int row) const {
    const EntryPtr* const entry = at(row);
    return entry ? &(*entry)->item : nullptr;
}

int HistoryListModel::rowOf(const UUID& id) const {
    const auto found =
        std::ranges::find(rows(), id, [](const EntryPtr& entry) { return entry->item.id; });
    return found == rows().end() ? -1 : static_cast<int>(found - rows().begin());
}

HistoryListModel::State HistoryListModel::stateOf(const Entry& entry) const {
    if (entry.item.live)
        return State::recording;
    if (const auto job = jobs_.find(entry.item.id); job != jobs_.end())
        return job->second.isPaused || job->second.step == Step::waiting ? State::waiting
                                                                         : State::refining;
    if (failures_.contains(entry.item.id))
        return State::failed;
    return entry.beginning.isEmpty() ? State::blank : State::finished;
}

QString HistoryListModel::stateText(const Entry& entry) const {
    switch (stateOf(entry)) {
    case State::recording:
        return historyText("正在录音");
    case State::waiting:
        return entry.beginning.isEmpty() ? historyText("等待转写") : historyText("等待重新转写");
    case State::refining: {
        const HistoryRefinementService::Progress& job = jobs_.at(entry.item.id);
        const std::string part = std::to_string(static_cast<int>(job.fraction * 100));
        return job.step == Step::transcribing ? historyText("转写 %lld%", {part})
                                              : historyText("翻译 %lld%", {part});
    }
    case State::failed:
        return historyText("转写失败");
    case State::blank:
        return historyText("没有文字");
    case State::finished:
        break;
    }
    return {};
}

QVariant HistoryListModel::data(const QModelIndex& index, int role) const {
    const EntryPtr* const row = at(index.row());
    if (!row)
        return {};
    const Entry& entry = **row;
    switch (role) {
    case DayRole:
        return dayOf(entry.item, environment_.host.wallClock());
    case TimeRole:
        return QString::fromStdString(entry.item.time.substr(0, 5));
    case TitleRole: {
        const QString note = QString::fromStdString(entry.item.note).simplified();
        return note.isEmpty() ? entry.beginning : note;
    }
    case DurationRole:
        return durationText(entry.item, environment_);
    case BilingualRole:
        return entry.item.hasBilingualTranscript;
    case RunningRole:
        return entry.item.live;
    case FailedRole:
        return stateOf(entry) == State::failed;
    case StateTextRole:
        return stateText(entry);
    case ProgressRole:
        return stateOf(entry) == State::refining ? jobs_.at(entry.item.id).fraction : -1.0;
    default:
        return {};
    }
}

QHash<int, QByteArray> HistoryListModel::roleNames() const {
    return {{DayRole, "day"},           {TimeRole, "time"},           {TitleRole, "title"},
            {DurationRole, "duration"}, {BilingualRole, "bilingual"}, {RunningRole, "running"},
            {FailedRole, "failed"},     {StateTextRole, "stateText"}, {ProgressRole, "progress"}};
}

} // namespace tessarune
