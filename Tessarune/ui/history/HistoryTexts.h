#pragma once

#include "Tessarune/ui/history/HistoryWindowEnvironment.h"

#include <QString>
#include <QVariantMap>
#include <string>
#include <string_view>
#include <vector>

namespace tessarune {

/// The text for a key in the user's language.
QString historyText(std::string_view key, const std::vector<std::string>& arguments = {});

/// The note of a recording, or else its date and time.
std::string titleOf(const HistoryItem& recording);

/// The duration of a recording; for a running one the duration so far, or an empty text if another
/// program records it.
QString durationText(const HistoryItem& recording, const HistoryWindowEnvironment& environment);

/// The fixed texts of the history window, by the names that the QML uses.
QVariantMap historyTexts();

} // namespace tessarune
