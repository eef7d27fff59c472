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

/// Which language pairs have a model, and of what files it consists. A value that does not change.
class TranslationCatalogue {
  public:
    /// What was published when this version of the program was made: the pairs alone, without
    /// files. It says what could be downloaded before anything was.
    static TranslationCatalogue builtIn();

    /// The list of files as it is published: a JSON object whose "data" has a record a file.
    /// Records of other kinds, of versions that the engine does not read, for other devices, or
    /// without the sum of the unpacked file are passed over. Throws std::runtime_error for a text
    /// that is no such list, or that leaves no pair.
    static TranslationCatalogue parse(const std::string& text,
                                      const TranslationCatalogueSource& source);

    bool lists(const TranslationPair& pair) const { return models_.contains(key(pair)); }

    /// The newest model of the pair that is meant for everybody, or else one on trial. Nothing if
    /// the pair is not listed or its files are not known.
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

/// The files of a translation model by what they are; found by their names, which begin with it.
/// Throws std::runtime_error if one is missing.
TranslationEngine::Files translationFilesOf(const StoredModel& model);

} // namespace tessarune
