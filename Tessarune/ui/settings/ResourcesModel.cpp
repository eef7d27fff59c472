#include "Tessarune/ui/settings/ResourcesModel.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace tessarune {

namespace {

constexpr double bytesInMegabyte = 1e6;

std::string megabytesOf(std::uint64_t bytes) {
    return Text::fixed(static_cast<double>(bytes) / bytesInMegabyte, 0) + " MB";
}

std::string stateText(const Resource& resource) {
    switch (resource.state) {
    case Resource::State::builtIn:
        return {};
    case Resource::State::installed:
        return resource.isRemovable ? localized("已下载") : localized("随程序安装");
    case Resource::State::available:
        return localized("可下载");
    case Resource::State::unavailable:
        return localized("还没有模型");
    case Resource::State::damaged:
        return localized("已损坏");
    }
    return {};
}

} // namespace

ResourcesModel::ResourcesModel(Host& host, Setting<std::string>& chosen, Source source)
    : host_(host),
      chosen_(chosen),
      source_(std::move(source)),
      link_(std::make_shared<Link>(Link{this})) {
    observations_.follow(chosen_.published(), [this] {
        if (!rows_.empty())
            Q_EMIT dataChanged(index(0), index(rowCount() - 1));
        Q_EMIT problemChanged();
    });
    refresh();
}

ResourcesModel::~ResourcesModel() {
    link_->model = nullptr;
    for (const Row& row : rows_) {
        if (row.download)
            row.download->stop.request_stop();
    }
}

void ResourcesModel::refresh() {
    std::vector<Resource> found;
    listProblem_.clear();
    try {
        found = source_.list();
    } catch (const std::exception& error) { // the rows stay as they are
        listProblem_ = error.what();
        Q_EMIT problemChanged();
        return;
    }
    std::vector<Row> rows;
    for (Resource& resource : found) {
        Row row{std::move(resource), nullptr, {}};
        if (Row* const known = find(row.resource.id)) {
            row.download = known->download;
            row.problem = known->problem;
        }
        rows.push_back(std::move(row));
    }
    // A running download, or the reason why one failed, stays visible even if its resource is not
    // listed any more.
    for (const Row& known : rows_) {
        const bool isListed = std::ranges::any_of(
            rows, [&](const Row& row) { return row.resource.id == known.resource.id; });
        if ((known.download || !known.problem.empty()) && !isListed)
            rows.push_back(known);
    }
    const bool isSameList = std::ranges::equal(
        rows, rows_, {}, [](const Row& row) { return row.resource.id; },
        [](const Row& row) { return row.resource.id; });
    if (!isSameList)
        beginResetModel();
    rows_ = std::move(rows);
    if (!isSameList)
        endResetModel();
    else if (!rows_.empty())
        Q_EMIT dataChanged(index(0), index(rowCount() - 1));
    Q_EMIT problemChanged();
}

ResourcesModel::Row* ResourcesModel::find(const std::string& id) {
    const auto found = std::ranges::find(rows_, id, [](const Row& row) { return row.resource.id; });
    return found == rows_.end() ? nullptr : &*found;
}

const ResourcesModel::Row* ResourcesModel::at(int row) const {
    return row >= 0 && row < rowCount() ? &rows_[static_cast<std::size_t>(row)] : nullptr;
}

int ResourcesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QHash<int, QByteArray> ResourcesModel::roleNames() const {
    return {{TitleRole, "title"},         {FlagRole, "flag"},
            {DetailRole, "detail"},       {NoteRole, "note"},
            {ProblemRole, "problem"},     {ChosenRole, "chosen"},
            {CanChooseRole, "canChoose"}, {CanDownloadRole, "canDownload"},
            {CanRemoveRole, "canRemove"}, {LoadingRole, "loading"},
            {ProgressRole, "progress"}};
}

bool ResourcesModel::canChoose(const Row& row) const {
    using State = Resource::State;
    return source_.choosesMissing || row.resource.state == State::builtIn ||
           row.resource.state == State::installed;
}

QString ResourcesModel::detailOf(const Row& row) const {
    const Resource& resource = row.resource;
    if (const auto* download = row.download.get()) {
        const std::string received = megabytesOf(download->received);
        return QString::fromStdString(
            download->expected == 0
                ? localized("正在下载，已有 %@", {received})
                : localized("正在下载：%@，共 %@", {received, megabytesOf(download->expected)}));
    }
    std::string detail = stateText(resource);
    if (resource.bytes > 0)
        detail += (detail.empty() ? "" : " · ") + megabytesOf(resource.bytes);
    return QString::fromStdString(detail);
}

QVariant ResourcesModel::data(const QModelIndex& index, int role) const {
    using State = Resource::State;
    const Row* const row = at(index.row());
    if (!row)
        return {};
    const Resource& resource = row->resource;
    switch (role) {
    case TitleRole:
        return QString::fromStdString(resource.title);
    case FlagRole:
        return QString::fromStdString(resource.flag);
    case DetailRole:
        return detailOf(*row);
    case NoteRole:
        return QString::fromStdString(resource.note);
    case ProblemRole:
        return QString::fromStdString(row->download ? row->download->trouble : row->problem);
    case ChosenRole:
        return resource.id == *chosen_;
    case CanChooseRole:
        return canChoose(*row);
    case CanDownloadRole:
        return !row->download &&
               (resource.state == State::available || resource.state == State::damaged);
    case CanRemoveRole:
        return !row->download && resource.isRemovable;
    case LoadingRole:
        return row->download != nullptr;
    case ProgressRole:
        return row->download && row->download->expected > 0
                   ? static_cast<double>(row->download->received) /
                         static_cast<double>(row->download->expected)
                   : -1.0;
    default:
        return {};
    }
}

QVariantMap ResourcesModel::texts() const {
    const auto shown = [](std::string_view key) { return QString::fromStdString(localized(key)); };
    return {{"download", shown("下载")}, {"stop", shown("停止")}, {"remove", shown("删除")}};
}

QString ResourcesModel::problem() const {
    const auto known = std::ranges::find(
        rows_, *chosen_, [](const Row& row) -> const auto& { return row.resource.id; });
    std::string text = listProblem_;
    if (!text.empty())
        return QString::fromStdString(text);
    if (known == rows_.end())
        text = localized("设置文件里的“%@”不是可选的值。", {*chosen_});
    else if (chosen_.isUnreadable())
        text = localized("设置文件里的值无效，现改用“%@”。", {known->resource.title});
    return QString::fromStdString(text);
}

void ResourcesModel::announce(const Row& row) {
    const int position = static_cast<int>(&row - rows_.data());
    Q_EMIT dataChanged(index(position), index(position));
}

void ResourcesModel::choose(int row) {
    if (const Row* const chosen = at(row); chosen && canChoose(*chosen))
        chosen_ = chosen->resource.id;
}

void ResourcesModel::download(int row) {
    if (!at(row) || at(row)->download)
        return;
    Row& wanted = rows_[static_cast<std::size_t>(row)];
    const std::string id = wanted.resource.id;
    wanted.problem.clear();
    wanted.download = std::make_shared<Download>();
    const std::stop_token stop = wanted.download->stop.get_token();
    auto progress = [link = link_, id](std::uint64_t now, std::uint64_t expected) {
        if (link->model)
            link->model->received(id, now, expected);
    };
    announce(wanted);
    spawn(Executor::main(host_),
          run(link_, source_.download(id, std::move(progress), stop), id, stop));
}

Task<void> ResourcesModel::run(std::shared_ptr<Link> link, Task<void> downloading, std::string id,
                               std::stop_token stop) {
    std::string problem;
    try {
        co_await downloading;
    } catch (const std::exception& error) {
        if (!stop.stop_requested()) // a download that the user stopped has not failed
            problem = error.what();
    }
    if (link->model)
        link->model->ended(id, problem);
}

void ResourcesModel::received(const std::string& id, std::uint64_t received,
                              std::uint64_t expected) {
    Row* const row = find(id);
    if (!row || !row->download)
        return;
    row->download->received = received;
    row->download->expected = expected;
    row->download->trouble.clear();
    announce(*row);
}

void ResourcesModel::ended(const std::string& id, const std::string& problem) {
    if (Row* const row = find(id)) {
        row->download = nullptr;
        row->problem = problem;
    }
    refresh();
}

void ResourcesModel::stop(int row) {
    if (const Row* const loading = at(row); loading && loading->download)
        loading->download->stop.request_stop();
}

void ResourcesModel::remove(int row) {
    if (!at(row))
        return;
    Row& removed = rows_[static_cast<std::size_t>(row)];
    try {
        removed.problem.clear();
        source_.remove(removed.resource.id);
    } catch (const std::exception& error) {
        removed.problem = error.what();
    }
    refresh();
}

void ResourcesModel::tellTrouble(const std::string& text) {
    for (const Row& row : rows_) {
        if (!row.download)
            continue;
        row.download->trouble = text;
        announce(row);
    }
}

} // namespace tessarune
