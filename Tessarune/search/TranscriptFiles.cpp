#include "Tessarune/search/TranscriptFiles.h"

#include "Tessarune/history/HistoryTranscriptPayload.h"
#include "TessaruneCore/text/Text.h"

#include <string_view>
#include <system_error>

namespace tessarune {

namespace {

/// The length of the ID with which the name of a sidecar begins.
constexpr std::size_t idLength = 36;

bool isSearched(std::string_view suffix) {
    return suffix == ".txt" || suffix == ".bilingual.txt";
}

} // namespace

std::map<UUID, std::string> TranscriptFiles::stamps() {
    std::map<UUID, std::string> found;
    const auto folder = catalog_.paths().transcripts();
    for (const auto& name : files_.list(folder)) {
        if (name.size() <= idLength || !isSearched(std::string_view(name).substr(idLength)))
            continue;
        if (const auto id = UUID::parse(std::string_view(name).substr(0, idLength)))
            found[*id] += stamp(folder / name);
    }
    return found;
}

/// The stamp of one file; empty if the file has vanished meanwhile.
std::string TranscriptFiles::stamp(const std::filesystem::path& path) {
    try {
        return path.extension().string() + std::to_string(files_.size(path)) + "@" +
               Text::shortest(files_.modifiedAt(path));
    } catch (const std::system_error&) {
        return {};
    }
}

std::string TranscriptFiles::read(const std::filesystem::path& path) {
    return files_.exists(path) ? files_.read(path) : std::string();
}

std::optional<TranscriptFiles::Texts> TranscriptFiles::texts(const UUID& id) {
    try {
        Texts texts{read(catalog_.transcriptURL(id)), {}};
        const std::string bilingual = read(catalog_.bilingualTranscriptURL(id));
        for (const auto& block : HistoryTranscriptPayload::bilingualBlocks(bilingual))
            texts.translation += block.translation + "\n";
        return texts;
    } catch (const std::system_error&) {
        return std::nullopt;
    }
}

} // namespace tessarune
