#include "Tessarune/diagnostics/DiagnosticsCatalog.h"

#include "Tessarune/diagnostics/DiagnosticsRunLayout.h"

#include <algorithm>
#include <limits>
#include <system_error>
#include <tuple>

namespace tessarune {

std::vector<DiagnosticsRun> DiagnosticsCatalog::runs() {
    std::vector<DiagnosticsRun> found;
    try {
        for (const std::string& name : files_.list(folder_)) {
            const auto directory = folder_ / name;
            if (!name.starts_with(DiagnosticsRunLayout::runNamePrefix) ||
                !files_.isDirectory(directory))
                continue;
            DiagnosticsRun run{directory, -std::numeric_limits<double>::infinity()};
            try {
                run.modifiedAt = files_.modifiedAt(directory);
            } catch (const std::system_error&) { // sorts as the oldest
            }
            found.push_back(std::move(run));
        }
    } catch (const std::system_error&) { // an unreadable folder counts as empty
    }
    std::ranges::sort(found, [](const DiagnosticsRun& a, const DiagnosticsRun& b) {
        return std::tuple(a.modifiedAt, a.id()) > std::tuple(b.modifiedAt, b.id());
    });
    return found;
}

std::vector<DiagnosticsRun> DiagnosticsCatalog::named(std::string_view name) {
    constexpr std::string_view prefix = DiagnosticsRunLayout::runNamePrefix;
    auto found = runs();
    std::erase_if(found, [&](const DiagnosticsRun& run) {
        const std::string id = run.id();
        return name.empty() ||
               (!id.starts_with(name) && !id.substr(prefix.size()).starts_with(name));
    });
    // An exact name wins: a second run in the same second has the same name with "-2" appended.
    const auto exact = std::ranges::find_if(found, [&](const DiagnosticsRun& run) {
        return run.id() == name || run.id().substr(prefix.size()) == name;
    });
    return exact == found.end() ? found : std::vector{*exact};
}

bool DiagnosticsCatalog::remove(const DiagnosticsRun& run) {
    if (run.directory.parent_path() != folder_ ||
        !run.id().starts_with(DiagnosticsRunLayout::runNamePrefix))
        return false;
    try {
        return files_.remove(run.directory);
    } catch (const std::system_error&) {
        return false;
    }
}

DiagnosticsCatalog::Pruned DiagnosticsCatalog::pruneRuns(const Budget& budget) {
    Pruned pruned;
    const auto all = runs();
    if (all.size() <= budget.keepMinimum)
        return pruned;
    std::int64_t kept = 0;
    for (std::size_t i = 0; i < all.size(); ++i) {
        const std::int64_t size = directorySize(all[i].directory);
        const bool fits = i < budget.maxRuns && kept + size <= budget.maxTotalBytes;
        if (i < budget.keepMinimum || fits) {
            kept += size;
            continue;
        }
        if (remove(all[i])) { // if not, the next pruning tries again
            ++pruned.prunedRuns;
            pruned.freedBytes += size;
        }
    }
    return pruned;
}

std::int64_t DiagnosticsCatalog::directorySize(const std::filesystem::path& directory) {
    std::vector<std::string> names;
    try {
        names = files_.list(directory);
    } catch (const std::system_error&) { // counts as empty
    }
    std::int64_t bytes = 0;
    for (const std::string& name : names) {
        const auto path = directory / name;
        try {
            bytes += files_.isDirectory(path) ? directorySize(path)
                                              : static_cast<std::int64_t>(files_.size(path));
        } catch (const std::system_error&) { // the other files count
        }
    }
    return bytes;
}

} // namespace tessarune
