#include "Tessarune/ui/history/HistoryRefinementModel.h"

#include "Tessarune/ui/history/HistoryTexts.h"
#include "TessaruneCore/text/Localization.h"

#include <utility>

namespace tessarune {

namespace {

using RefinementStep = HistoryRefinementService::Progress::Step;
using RefinementStatus = HistoryRefinementOutcome::Status;
using RefinedTranslation = HistoryRefinementOutcome::Translation;

/// The message about an outcome. Empty for a failure, which `problem` shows, and for a deleted
/// recording.
std::string outcomeText(const HistoryRefinementOutcome& outcome) {
    if (outcome.status == RefinementStatus::cancelled)
        return localized("文字保持原样。");
    if (outcome.status != RefinementStatus::finished)
        return {};
    if (outcome.translation == RefinedTranslation::failed)
        return localized("译文保持原样：%@", {outcome.translationProblem});
    return localized("已用 %@ 重新转写", {outcome.model});
}

} // namespace

HistoryRefinementModel::HistoryRefinementModel(const HistoryWindowEnvironment& environment,
                                               HistoryDetailModel& detail,
                                               std::function<DataFolderHold()> holdDataFolder,
                                               std::function<void(const std::string&)> onAlert)
    : environment_(environment),
      detail_(detail),
      holdDataFolder_(std::move(holdDataFolder)),
      onAlert_(std::move(onAlert)) {
    connect(&detail_, &HistoryDetailModel::recordingChanged, this,
            &HistoryRefinementModel::changed);
    connect(&detail_, &HistoryDetailModel::transcriptChanged, this,
            &HistoryRefinementModel::changed);
    observations_.follow(environment_.refinement.jobs(), [this] { Q_EMIT changed(); });
    observations_.follow(environment_.refinement.failures(), [this] { Q_EMIT changed(); });
}

std::optional<HistoryRefinementService::Progress> HistoryRefinementModel::job() const {
    const auto& recording = detail_.recording();
    const auto& jobs = *environment_.refinement.jobs();
    const auto found = recording ? jobs.find(recording->id) : jobs.end();
    return found == jobs.end() ? std::nullopt : std::optional(found->second);
}

bool HistoryRefinementModel::canRefine() const {
    return detail_.isShown() && !detail_.isRunning() && !isBusy();
}

QString HistoryRefinementModel::stateText() const {
    const auto current = job();
    if (!current)
        return {};
    if (current->isPaused)
        return historyText("正在录音，结束后继续转写。");
    switch (current->step) {
    case RefinementStep::waiting:
        return detail_.hasText() ? historyText("等待重新转写") : historyText("等待转写");
    case RefinementStep::transcribing:
        return detail_.hasText()
                   ? historyText("正在重新转写…")
                   : historyText("转写 %lld%",
                                 {std::to_string(static_cast<int>(current->fraction * 100))});
    case RefinementStep::translating:
        return detail_.hasTranslation() ? historyText("正在重新翻译…") : historyText("正在翻译…");
    }
    return {};
}

double HistoryRefinementModel::progress() const {
    const auto current = job();
    return current && !current->isPaused && current->step != RefinementStep::waiting
               ? current->fraction
               : -1;
}

QString HistoryRefinementModel::problem() const {
    const auto& recording = detail_.recording();
    const auto& failures = *environment_.refinement.failures();
    const auto found = recording ? failures.find(recording->id) : failures.end();
    return found == failures.end() ? QString()
                                   : historyText("转写失败，文字保持原样：%@", {found->second});
}

QStringList HistoryRefinementModel::models() const {
    QStringList all;
    if (!models_.empty())
        all << historyText("自动（本机最好的模型）");
    for (const std::string& model : models_)
        all << QString::fromStdString(model);
    return all;
}

void HistoryRefinementModel::refresh() {
    models_ = environment_.speechModels();
    Q_EMIT modelsChanged();
}

void HistoryRefinementModel::refine(int model) {
    const auto& recording = detail_.recording();
    if (!canRefine() || model < 0 || model > static_cast<int>(models_.size()))
        return;
    if (!holdDataFolder_()) // only a check: the service itself holds the folder
        return;
    const auto request = HistoryRefinementRequest::current(environment_.settings, recording->id,
                                                           recording->filePath.value_or(""));
    if (!request)
        return onAlert_(localized("没有选择要识别的英语，无法转写。"));
    spawn(Executor::main(environment_.host),
          run(*request, model == 0 ? std::string(HistoryRefinementService::bestModel)
                                   : models_[static_cast<std::size_t>(model) - 1]));
}

Task<void> HistoryRefinementModel::run(HistoryRefinementRequest request, std::string model) {
    const auto held = lifeline_.held();
    Task<HistoryRefinementOutcome> refining =
        environment_.refinement.refine(std::move(request), std::move(model));
    const HistoryRefinementOutcome outcome = co_await refining;
    const std::string text = outcomeText(outcome);
    if (*held && !text.empty())
        onAlert_(text);
}

void HistoryRefinementModel::cancel() {
    if (const auto& recording = detail_.recording())
        environment_.refinement.cancel(recording->id);
}

} // namespace tessarune
