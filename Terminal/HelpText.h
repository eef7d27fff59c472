#pragma once

#include <string>

namespace CLI {
class App;
}

namespace tessarune {

/// The text of --help: the grouped options and examples, in 80 columns and in the user's
/// language.
std::string helpText(const CLI::App& app);

} // namespace tessarune
