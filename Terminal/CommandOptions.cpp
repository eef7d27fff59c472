#include "Terminal/CommandOptions.h"

#include "TessaruneCore/text/Localization.h"

#include <algorithm>

namespace tessarune {

namespace {

[[noreturn]] void clash(const CLI::Option* one, const CLI::Option* other) {
    throw UsageProblem(
        localized("%@ and %@ cannot be combined.", {one->get_name(), other->get_name()}));
}

} // namespace

CLI::Option* CommandOptions::command(CLI::Option* option) {
    commands_.push_back(option->group(heading_));
    return option;
}

CLI::Option* CommandOptions::detail(CLI::Option* owner, CLI::Option* option) {
    details_.push_back({option->group(heading_), owner});
    return option;
}

void CommandOptions::refuseClashes(const std::vector<CLI::Option*>& captions) const {
    for (const auto& [option, owner] : details_) {
        if (isGiven(option) && !isGiven(owner))
            throw UsageProblem(localized("%@ needs %@.", {option->get_name(), owner->get_name()}));
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
