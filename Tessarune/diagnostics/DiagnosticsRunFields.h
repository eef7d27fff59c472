#pragma once

#include "Tessarune/diagnostics/DiagnosticsRunLayout.h"

#include <string_view>
#include <utility>
#include <vector>

/// The members of a run's files, by kind; `DiagnosticsRunLayout::fields` joins them to one table.
namespace tessarune::DiagnosticsRunFields {

using DiagnosticsRunLayout::anything;
using DiagnosticsRunLayout::Field;

/// Artifacts and groups, each with its members.
using Table = std::vector<std::pair<std::string_view, std::vector<Field>>>;

/// What describes a run as a whole, and the groups that several files share.
Table run();
Table recognition(); ///< the recogniser's results, live and when they are transcribed again
Table captions();
Table performance();

// What several kinds have in common.
inline constexpr Field clockTime{"t",
                                 "seconds since 1970 on the session's clock, which never jumps"};
inline constexpr Field schema{"schemaVersion", "of this file"};

} // namespace tessarune::DiagnosticsRunFields
