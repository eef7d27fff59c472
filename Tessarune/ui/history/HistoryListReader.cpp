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
        EntryPtr before = found == known_.end() ? nullptr : found->second;
        // The text of a session is saved at its end. If it is another program's, no notification
        // reports that, so an empty text is read again.
        const bool hasBeginning = before && !before->item.live && !before->beginning.isEmpty();
        if (!hasBeginning || before->item != item) {
            Entry entry;
            entry.beginning = hasBeginning ? before->beginning : beginningOf(item);
            entry.searched =
                (QString::fromStdString(item.note + " " + item.date + " " + item.time) +
                 QLatin1Char(' ') + entry.beginning)
                    .toCaseFolded();
            entry.item = std::move(item);
            before = std::make_shared<const Entry>(std::move(entry));
        }
        now.emplace(before->item.id, before);
        all.push_back(std::move(before));
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
