#include "Tessarune/ui/history/HistoryListModel.h"

#include "Tessarune/history/HistoryItemLoader.h"
#include "TessaruneCore/host/RunOn.h"
#include "TessaruneCore/text/DateText.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>

namespace tessarune {

namespace {

/// Several changes in a row are read once.
constexpr double settleSeconds = 0.05;
/// How a transcript begins, in bytes.
constexpr std::size_t beginning = 400;
constexpr double daySeconds = 86'400;

QByteArray keyOf(const UUID& id) {
    return QByteArray(reinterpret_cast<const char*>(id.bytes.data()),
                      static_cast<qsizetype>(id.bytes.size()));
}

QString dayOf(const HistoryItem& item, double now) {
    const auto day = [](double time) {
        return DateText::formatted(time, localized("yyyy年M月d日"), localized("zh_Hans_CN"));
    };
    if (item.date == day(now))
        return QString::fromStdString(localized("今天"));
    if (item.date == day(now - daySeconds))
        return QString::fromStdString(localized("昨天"));
    return QString::fromStdString(item.date);
}

} // namespace

struct HistoryListModel::Line {
    HistoryListModel* model;
};

HistoryListModel::HistoryListModel(const HistoryWindowEnvironment& environment)
    : environment_(environment),
      queue_(environment.host.serialQueue("Tessarune.history.list", QueuePriority::utility)),
      line_(std::make_shared<Line>(Line{this})) {
    follow();
    reload();
}

HistoryListModel::~HistoryListModel() {
    observations_.clear();
    line_->model = nullptr;
    queue_->sync([] {});
}

/// Notifications come on the thread of whoever changed something.
void HistoryListModel::follow() {
    const auto changed = [&host = environment_.host,
                          line = std::weak_ptr(line_)](const NotificationObject& object) {
        host.post([line, object] {
            const auto still = line.lock();
            if (!still || !still->model)
                return;
            if (const UUID* id = std::get_if<UUID>(&object))
                still->model->texts_.remove(keyOf(*id));
            still->model->reload();
        });
    };
    const auto indexed = [&host = environment_.host,
                          line = std::weak_ptr(line_)](const NotificationObject&) {
        host.post([line] {
            const auto still = line.lock();
            if (still && still->model)
                still->model->search();
        });
    };
    observations_.push_back(
        environment_.notifications.observe(NotificationName::searchIndexDidChange, indexed));
    observations_.push_back(
        environment_.notifications.observe(NotificationName::recordingCatalogDidChange, changed));
    observations_.push_back(environment_.notifications.observe(
        NotificationName::recordingTranscriptDidUpdate, changed));
    if (environment_.refinements)
        refinements_.follow(*environment_.refinements, [this] {
            if (count() > 0)
                Q_EMIT dataChanged(index(0), index(count() - 1), {WorkRole});
        });
}

void HistoryListModel::reload() {
    isReloadDue_ = true;
    if (!isReading_)
        spawn(Executor::main(environment_.host), load());
}

Task<void> HistoryListModel::load() {
    const auto line = line_;
    Host& host = environment_.host;
    RecordingCatalog& catalog = environment_.catalog;
    FileSystem& files = environment_.files;
    const auto queue = queue_;
    isReading_ = true;
    while (isReloadDue_) {
        isReloadDue_ = false;
        std::vector<HistoryItem> items;
        std::string problem;
        co_await runOn(Executor::queue(host, queue), [&] {
            items = HistoryItemLoader::load(catalog, files);
            problem = catalog.readingProblem();
        });
        if (!line->model)
            co_return;
        all_ = std::move(items);
        problem_ = std::move(problem);
        if (std::exchange(isLoading_, false))
            Q_EMIT loaded();
        update();
        Task<bool> settling = sleep(Executor::main(host), settleSeconds);
        co_await settling;
        if (!line->model)
            co_return;
    }
    isReading_ = false;
}

void HistoryListModel::setQuery(const QString& query) {
    words_ = query.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    query_ = SearchQuery::parse(query.toStdString());
    search();
    update();
}

/// What an earlier search found stays until this one has an answer.
void HistoryListModel::search() {
    ++searches_;
    if (query_.isEmpty())
        found_.clear();
    else
        spawn(Executor::main(environment_.host), find(query_));
}

Task<void> HistoryListModel::find(SearchQuery query) {
    const auto line = line_;
    const int number = searches_;
    Task<TranscriptSearch::Found> finding = environment_.search.find(std::move(query));
    const TranscriptSearch::Found found = co_await finding;
    if (!line->model || searches_ != number)
        co_return;
    found_ = std::unordered_set<UUID>(found.recordings.begin(), found.recordings.end());
    update();
}

QString HistoryListModel::workOf(const UUID& id) const {
    using Step = HistoryRefinementService::Progress::Step;
    if (!environment_.refinements)
        return {};
    const HistoryRefinementService::Jobs& jobs = **environment_.refinements;
    const auto job = jobs.find(id);
    if (job == jobs.end())
        return {};
    const std::string part = std::to_string(static_cast<int>(job->second.fraction * 100));
    if (job->second.isPaused || job->second.step == Step::waiting)
        return QString::fromStdString(localized("等待精修"));
    return QString::fromStdString(job->second.step == Step::transcribing
                                      ? localized("精修 %lld%", {part})
                                      : localized("翻译 %lld%", {part}));
}

void HistoryListModel::setHidden(const UUID& id, bool isHidden) {
    if (isHidden)
        hidden_.insert(id);
    else
        hidden_.erase(id);
    update();
}

bool HistoryListModel::isListed(const HistoryItem& item) {
    if (hidden_.contains(item.id))
        return false;
    if (words_.isEmpty() || found_.contains(item.id))
        return true;
    const QString text = QString::fromStdString(item.note + " " + item.date + " " + item.time) +
                         QLatin1Char(' ') + textOf(item);
    return std::ranges::all_of(
        words_, [&](const QString& word) { return text.contains(word, Qt::CaseInsensitive); });
}

/// What stands before the first and behind the last difference stays where it is.
void HistoryListModel::update() {
    std::vector<HistoryItem> now;
    std::ranges::copy_if(all_, std::back_inserter(now),
                         [this](const HistoryItem& item) { return isListed(item); });
    const auto isSame = [](const HistoryItem& a, const HistoryItem& b) { return a.id == b.id; };
    const auto first = std::ranges::mismatch(shown_, now, isSame);
    const auto begin = static_cast<int>(first.in1 - shown_.begin());
    int common = 0;
    while (static_cast<int>(shown_.size()) - common > begin &&
           static_cast<int>(now.size()) - common > begin &&
           isSame(shown_[shown_.size() - 1 - static_cast<std::size_t>(common)],
                  now[now.size() - 1 - static_cast<std::size_t>(common)]))
        ++common;
    const int removedEnd = static_cast<int>(shown_.size()) - common;
    const int addedEnd = static_cast<int>(now.size()) - common;
    const auto at = [](auto& rows, int row) { return rows.begin() + row; };
    if (removedEnd > begin) {
        beginRemoveRows({}, begin, removedEnd - 1);
        shown_.erase(at(shown_, begin), at(shown_, removedEnd));
        endRemoveRows();
    }
    if (addedEnd > begin) {
        beginInsertRows({}, begin, addedEnd - 1);
        shown_.insert(at(shown_, begin), at(now, begin), at(now, addedEnd));
        endInsertRows();
    }
    shown_ = std::move(now);
    if (!shown_.empty())
        Q_EMIT dataChanged(index(0), index(count() - 1));
    if (removedEnd > begin || addedEnd > begin)
        Q_EMIT countChanged();
    Q_EMIT updated();
}

QString HistoryListModel::textOf(const HistoryItem& item) const {
    const QByteArray key = keyOf(item.id);
    if (const auto known = texts_.constFind(key); known != texts_.constEnd())
        return *known;
    std::string text;
    try {
        const auto path = environment_.catalog.transcriptURL(item.id);
        if (environment_.files.exists(path))
            text = environment_.files.read(path, 0, beginning);
    } catch (const std::exception&) { // the detail says what is wrong
    }
    const std::string_view whole = Text::withoutCutCharacter(text);
    QString shown = QString::fromStdString(Text::collapsingWhiteSpace(Text::trimmed(whole)));
    if (!item.live)
        texts_.insert(key, shown);
    return shown;
}

int HistoryListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(shown_.size());
}

const HistoryItem* HistoryListModel::item(int row) const {
    return row >= 0 && row < count() ? &shown_[static_cast<std::size_t>(row)] : nullptr;
}

int HistoryListModel::rowOf(const UUID& id) const {
    const auto found = std::ranges::find(shown_, id, &HistoryItem::id);
    return found == shown_.end() ? -1 : static_cast<int>(found - shown_.begin());
}

QVariant HistoryListModel::data(const QModelIndex& index, int role) const {
    const HistoryItem* const row = item(index.row());
    if (!row)
        return {};
    switch (role) {
    case DayRole:
        return dayOf(*row, environment_.host.now());
    case TimeRole:
        return QString::fromStdString(row->time.substr(0, 5));
    case TitleRole: {
        const QString note = QString::fromStdString(row->note).simplified();
        return note.isEmpty() ? textOf(*row) : note;
    }
    case DurationRole:
        return QString::fromStdString(row->dur);
    case BilingualRole:
        return row->hasBilingualTranscript;
    case RunningRole:
        return row->live;
    case WorkRole:
        return workOf(row->id);
    case EmptyRole:
        return !row->live && textOf(*row).isEmpty();
    default:
        return {};
    }
}

QHash<int, QByteArray> HistoryListModel::roleNames() const {
    return {{DayRole, "day"},
            {TimeRole, "time"},
            {TitleRole, "title"},
            {DurationRole, "duration"},
            {BilingualRole, "bilingual"},
            {RunningRole, "running"},
            {EmptyRole, "blank"},
            {WorkRole, "work"}};
}

} // namespace tessarune
