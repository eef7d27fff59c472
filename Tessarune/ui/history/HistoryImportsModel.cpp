#include "Tessarune/ui/history/HistoryImportsModel.h"

#include "Tessarune/ui/history/HistoryTexts.h"

#include <algorithm>
#include <utility>

namespace tessarune {

namespace {

using FileState = ImportedFile::State;

} // namespace

HistoryImportsModel::HistoryImportsModel(const HistoryWindowEnvironment& environment,
                                         std::function<DataFolderHold()> holdDataFolder)
    : environment_(environment), holdDataFolder_(std::move(holdDataFolder)) {
    observations_.follow(environment_.imports.copied(), [this] {
        announce(rowIn(FileState::copying), {StateTextRole, ProgressRole});
    });
}

void HistoryImportsModel::choose() {
    environment_.chooseFiles(lifeline_.calling(
        [](HistoryImportsModel& model, const std::vector<std::filesystem::path>& files) {
            std::vector<ImportedFile> chosen(files.size());
            for (std::size_t i = 0; i < files.size(); ++i)
                chosen[i].path = files[i];
            model.add(chosen);
        }));
}

void HistoryImportsModel::add(const QList<QUrl>& files) {
    std::vector<ImportedFile> chosen;
    for (const QUrl& file : files) {
        if (file.isLocalFile())
            chosen.push_back({.path = file.toLocalFile().toStdString()});
        else
            chosen.push_back({.path = file.toString().toStdString(),
                              .state = FileState::failed,
                              .problem = localized("只能导入本机上的文件。")});
    }
    add(chosen);
}

void HistoryImportsModel::add(const std::vector<ImportedFile>& files) {
    if (files.empty())
        return;
    DataFolderHold hold = holdDataFolder_();
    if (!hold)
        return;
    std::vector<ImportedFile> all = rows();
    const int firstNew = count();
    for (ImportedFile file : files) {
        file.number = ++lastNumber_;
        all.push_back(std::move(file));
    }
    set(std::move(all));
    Q_EMIT attentionWanted(firstNew);
    if (!std::exchange(isImporting_, true))
        spawn(Executor::main(environment_.host), importAll(std::move(hold)));
}

Task<void> HistoryImportsModel::importAll(DataFolderHold hold) {
    const DataFolderHold keptToTheEnd = std::move(hold);
    const auto held = lifeline_.held();
    HistoryImportCoordinator& imports = environment_.imports;
    for (int row = rowIn(FileState::waiting); row >= 0; row = rowIn(FileState::waiting)) {
        change(row, [](ImportedFile& file) { file.state = FileState::copying; });
        Q_EMIT attentionWanted(row);
        const int number = at(row)->number;
        std::vector<std::filesystem::path> files(1, at(row)->path);
        stop_ = std::stop_source();
        Task<std::vector<HistoryImportCoordinator::Problem>> importing =
            imports.importAudio(std::move(files), stop_.get_token());
        const std::vector<HistoryImportCoordinator::Problem> problems = co_await importing;
        if (!*held)
            co_return;
        ended(number, problems.empty() ? std::string() : problems.front().text);
    }
    isImporting_ = false;
}

void HistoryImportsModel::ended(int number, const std::string& problem) {
    std::vector<ImportedFile> files = rows();
    const auto file = std::ranges::find(files, number, &ImportedFile::number);
    const int row = static_cast<int>(file - files.begin());
    if (problem.empty()) {
        files.erase(file);
    } else {
        file->state = FileState::failed;
        file->problem = problem;
    }
    set(std::move(files));
    if (!problem.empty())
        Q_EMIT attentionWanted(row);
}

void HistoryImportsModel::remove(int row) {
    const ImportedFile* const file = at(row);
    if (!file)
        return;
    if (file->state == FileState::copying) {
        stop_.request_stop(); // the row leaves the list once the import has ended
        return;
    }
    std::vector<ImportedFile> files = rows();
    files.erase(files.begin() + row);
    set(std::move(files));
}

void HistoryImportsModel::set(std::vector<ImportedFile> files) {
    const auto isSameFile = [](const ImportedFile& a, const ImportedFile& b) {
        return a.number == b.number;
    };
    show(std::move(files), isSameFile);
}

int HistoryImportsModel::rowIn(FileState state) const {
    const auto found = std::ranges::find(rows(), state, &ImportedFile::state);
    return found == rows().end() ? -1 : static_cast<int>(found - rows().begin());
}

QVariant HistoryImportsModel::data(const QModelIndex& index, int role) const {
    const ImportedFile* const file = at(index.row());
    if (!file)
        return {};
    const bool isCopying = file->state == FileState::copying;
    const double copied = environment_.imports.copied()->value_or(0);
    switch (role) {
    case NameRole:
        return QString::fromStdString(file->path.filename().string());
    case StateTextRole:
        if (file->state == FileState::failed)
            return QString::fromStdString(file->problem);
        return isCopying
                   ? historyText("导入 %lld%", {std::to_string(static_cast<int>(copied * 100))})
                   : historyText("等待导入");
    case FailedRole:
        return file->state == FileState::failed;
    case ProgressRole:
        return isCopying ? copied : -1.0;
    default:
        return {};
    }
}

QHash<int, QByteArray> HistoryImportsModel::roleNames() const {
    return {{NameRole, "name"},
            {StateTextRole, "stateText"},
            {FailedRole, "failed"},
            {ProgressRole, "progress"}};
}

} // namespace tessarune
