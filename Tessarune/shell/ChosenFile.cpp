#include "Tessarune/shell/ChosenFile.h"

#include "TessaruneCore/text/Localization.h"

#include <algorithm>
#include <system_error>

namespace tessarune::ChosenFile {

std::filesystem::path followingLink(const std::filesystem::path& path) {
    std::error_code error;
    const bool isFollowed =
        std::filesystem::is_symlink(path, error) && std::filesystem::is_regular_file(path, error);
    const std::filesystem::path target =
        isFollowed ? std::filesystem::canonical(path, error) : std::filesystem::path();
    return target.empty() ? path : target;
}

bool isBelow(const std::filesystem::path& folder, const std::filesystem::path& path) {
    std::error_code ignored;
    const auto whole = std::filesystem::absolute(path, ignored);
    const auto inner = std::filesystem::weakly_canonical(whole, ignored);
    const auto outer = std::filesystem::weakly_canonical(folder, ignored);
    return !outer.empty() && std::ranges::mismatch(outer, inner).in1 == outer.end();
}

std::string isOwnProblem(const std::filesystem::path& path) {
    return localized("%@ is in the folder of the recordings; choose another folder.",
                     {path.string()});
}

} // namespace tessarune::ChosenFile
