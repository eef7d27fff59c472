#pragma once

#include "Tessarune/diagnostics/DiagnosticsRunLayout.h"

#include <string_view>
#include <utility>
#include <vector>

/// Descriptions of the fields in a run's files, by subject. `DiagnosticsRunLayout::fields` joins
/// them to one table.
namespace tessarune::DiagnosticsRunFields {

using DiagnosticsRunLayout::anything;
using DiagnosticsRunLayout::Field;

/// Artifacts and groups, each with its fields.
using Table = std::vector<std::pair<std::string_view, std::vector<Field>>>;

/// The files that describe a run as a whole, and the groups that several files share.
Table run();
Table recognition(); ///< the recogniser's results, of the session and of a refinement
Table captions();
Table performance();

// Fields of several tables.
inline constexpr Field clockTime{"t",
                                 "seconds since 1970 on the session's clock, which never jumps"};
inline constexpr Field schema{"schemaVersion", "of this file"};

} // namespace tessarune::DiagnosticsRunFields
