#include "Tessarune/ui/settings/SettingsResources.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/translation/TranslationSupport.h"

#include <utility>

namespace tessarune::SettingsResources {

namespace {

constexpr std::string_view automaticModel = "automatic";

Resource::State stateOf(const SpeechModelState& model) {
    if (!model.damage.empty())
        return Resource::State::damaged;
    return model.isInstalled ? Resource::State::installed : Resource::State::available;
}

Resource::State stateOf(const TranslationLanguageState& language) {
    if (!language.damage.empty())
        return Resource::State::damaged;
    switch (language.status) {
    case TranslationAvailabilityStatus::installed:
        return Resource::State::installed;
    case TranslationAvailabilityStatus::supported:
        return Resource::State::available;
    case TranslationAvailabilityStatus::unsupported:
        break;
    }
    return Resource::State::unavailable;
}

std::string speedText(const std::optional<SpeechModelSpeed>& speed) {
    if (!speed)
        return localized("尚未在本机用过，速度未知");
    const std::string seconds = Text::fixed(speed->passSeconds, 2);
    return speed->isTooSlow ? localized("在本机太慢：五秒长的一行每次更新要 %@ 秒", {seconds})
                            : localized("在本机够快：五秒长的一行每次更新要 %@ 秒", {seconds});
}

} // namespace

ResourcesModel::Source
speechModels(SpeechModelManager& models,
             std::function<std::optional<SpeechModelSpeed>(const std::string& name)> speed) {
    ResourcesModel::Source source;
    source.list = [&models, speed = std::move(speed)] {
        std::vector<Resource> all{{.id = std::string(automaticModel),
                                   .title = localized("自动"),
                                   .state = Resource::State::builtIn,
                                   .note = localized("选用本机跟得上的最大模型")}};
        for (const SpeechModelState& model : models.list())
            all.push_back({.id = model.name,
                           .title = model.name,
                           .bytes = model.bytes,
                           .state = stateOf(model),
                           .isRemovable = model.isRemovable,
                           .note = !model.damage.empty() ? model.damage
                                   : model.isInstalled   ? speedText(speed(model.name))
                                                         : std::string()});
        return all;
    };
    source.download = [&models](std::string id, ResourcesModel::Source::Progress progress,
                                std::stop_token stop) {
        return models.download(
            std::move(id),
            [progress = std::move(progress)](AssetProgress now) {
                progress(now.received, now.expected);
            },
            std::move(stop));
    };
    source.remove = [&models](const std::string& id) { models.remove(id); };
    return source;
}

ResourcesModel::Source languages(TranslationLanguages& languages) {
    ResourcesModel::Source source;
    source.list = [&languages] {
        std::vector<Resource> all;
        for (const TranslationLanguageState& state : languages.list()) {
            const auto* const language = TranslationSupport::targetLanguage(state.id);
            all.push_back(
                {.id = state.id,
                 .title = TranslationSupport::translationTargetDisplayName({state.id, {}}),
                 .flag = language ? language->flag : std::string(),
                 .bytes = state.bytes,
                 .state = stateOf(state),
                 .isRemovable = state.isRemovable,
                 .note = state.damage});
        }
        return all;
    };
    source.download = [&languages](std::string id, ResourcesModel::Source::Progress progress,
                                   std::stop_token stop) {
        return languages.download(
            std::move(id),
            [progress = std::move(progress)](TranslationDownloadProgress now) {
                progress(now.received, now.expected);
            },
            std::move(stop));
    };
    source.remove = [&languages](const std::string& id) { languages.remove(id); };
    source.choosesMissing = true;
    return source;
}

} // namespace tessarune::SettingsResources
