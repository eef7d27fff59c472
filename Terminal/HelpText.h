#pragma once

#include <string>

namespace CLI {
class App;
}

namespace tessarune {

/// What --help prints: the options in their groups and examples, on 80 columns, in the user's
/// language.
std::string helpText(const CLI::App& app);

} // namespace tessarune
