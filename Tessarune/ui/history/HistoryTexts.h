#pragma once

#include "Tessarune/ui/history/HistoryWindowEnvironment.h"

#include <QString>
#include <QVariantMap>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// The text for a key in the user's language, as Qt wants it.
QString historyText(std::string_view key, const std::vector<std::string>& arguments = {});

/// The length of a recording, of one that runs: so far. Empty if another program makes it.
QString durationText(const HistoryItem& recording, const HistoryWindowEnvironment& environment);

/// The fixed texts of the history window, by the names that its views have for them.
QVariantMap historyTexts();

} // namespace tessarune
