#include "Tessarune/ui/history/HistoryListReader.h"

#include "Tessarune/history/HistoryItemLoader.h"
#include "TessaruneCore/text/Text.h"

#include <exception>
#include <string>
#include <utility>

namespace tessarune {

namespace {

constexpr std::size_t beginningBytes = 400;

} // namespace

std::vector<HistoryListReader::EntryPtr> HistoryListReader::entries() {
    std::vector<EntryPtr> all;
    std::unordered_map<UUID, EntryPtr> now;
    for (HistoryItem& item : HistoryItemLoader::load(catalog_, files_)) {
        const auto found = known_.find(item.id);
        EntryPtr entry = found == known_.end() ? nullptr : found->second;
        // A session saves its text at its end. If the session belongs to another program, no
        // notification reports this, so an empty text is read again each time.
        const bool hasBeginning = entry && !entry->item.live && !entry->beginning.isEmpty();
        if (!hasBeginning || entry->item != item) {
            Entry changed;
            changed.beginning = hasBeginning ? entry->beginning : beginningOf(item);
            changed.searched =
                (QString::fromStdString(item.note + " " + item.date + " " + item.time) +
                 QLatin1Char(' ') + changed.beginning)
                    .toCaseFolded();
            changed.item = std::move(item);
            entry = std::make_shared<const Entry>(std::move(changed));
        }
        now.emplace(entry->item.id, entry);
        all.push_back(std::move(entry));
    }
    known_ = std::move(now);
    return all;
}

QString HistoryListReader::beginningOf(const HistoryItem& item) const {
    std::string text;
    try {
        const auto path = catalog_.transcriptURL(item.id);
        if (files_.exists(path))
            text = files_.read(path, 0, beginningBytes);
    } catch (const std::exception&) { // the detail view shows the problem
        text.clear();
    }
    const std::string_view complete = Text::withoutCutCharacter(text);
    return QString::fromStdString(Text::collapsingWhiteSpace(Text::trimmed(complete)));
}

} // namespace tessarune
