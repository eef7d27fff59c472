#pragma once

#include "Tessarune/platform/model-store/AvailableModel.h"
#include "Tessarune/platform/translation-engine/LanguagePairs.h"
#include "Tessarune/platform/translation-engine/TranslationEngine.h"

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tessarune {

/// The language pairs that have a model, and the files of each model. An immutable value.
class TranslationCatalogue {
  public:
    /// The pairs at the release of this version of the program, without files. Used until the
    /// catalogue is fetched for the first time, to show what can be downloaded.
    static TranslationCatalogue builtIn();

    /// Parses the published list of files: a JSON object whose "data" has one record per file.
    /// Skips records of other kinds, of versions that the engine does not read, for other devices,
    /// or without the checksum of the unpacked file. Throws std::runtime_error if the text is not
    /// such a list or has no usable pair.
    static TranslationCatalogue parse(const std::string& text,
                                      const TranslationCatalogueSource& source);

    bool lists(const TranslationPair& pair) const { return models_.contains(key(pair)); }

    /// The newest model of the pair that is published for everybody, or else the newest trial
    /// version. `nullopt` if the pair is not listed or its files are unknown.
    std::optional<AvailableModel> model(const TranslationPair& pair) const;

  private:
    struct Model {
        std::string version;
        std::vector<FileToFetch> files;
    };
    using Key = std::pair<std::string, std::string>;
    static Key key(const TranslationPair& pair) { return {pair.source, pair.target}; }

    std::map<Key, Model> models_;
};

/// Finds the files of a translation model by purpose; a file's name begins with its purpose. Throws
/// std::runtime_error if a file is missing.
TranslationEngine::Files translationFilesOf(const StoredModel& model);

} // namespace tessarune
