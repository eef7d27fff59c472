#include "Terminal/CommandOptions.h"

#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/Text.h"

#include <algorithm>

namespace tessarune {

namespace {

[[noreturn]] void clash(const CLI::Option* one, const CLI::Option* other) {
    throw UsageProblem(
        localized("%@ and %@ cannot be combined.", {one->get_name(), other->get_name()}));
}

} // namespace

CLI::Option* CommandOptions::addCommand(CLI::Option* option) {
    commands_.push_back(option->group(heading_));
    return option;
}

CLI::Option* CommandOptions::addDetail(std::vector<CLI::Option*> owners, CLI::Option* option) {
    details_.push_back({option->group(heading_), std::move(owners)});
    return option;
}

void CommandOptions::refuseClashes(const std::vector<CLI::Option*>& captions) const {
    for (const auto& [option, owners] : details_) {
        if (!isGiven(option) || std::ranges::any_of(owners, isGiven))
            continue;
        std::vector<std::string> names;
        names.reserve(owners.size());
        for (const CLI::Option* owner : owners)
            names.push_back(owner->get_name());
        throw UsageProblem(localized("%@ can only be used with %@.",
                                     {option->get_name(), Text::joined(names, localized(", "))}));
    }
    const auto command = std::ranges::find_if(commands_, isGiven);
    if (command == commands_.end())
        return;
    const auto other = std::find_if(command + 1, commands_.end(), isGiven);
    if (other != commands_.end())
        clash(*command, *other);
    if (const auto caption = std::ranges::find_if(captions, isGiven); caption != captions.end())
        clash(*command, *caption);
}

} // namespace tessarune
