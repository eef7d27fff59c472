#include "Terminal/CommandOutput.h"

#include "Terminal/ExitStatus.h"
#include "TessaruneCore/text/Localization.h"
#include "TessaruneCore/text/SystemErrors.h"
#include "TessaruneCore/text/Text.h"
#include "TessaruneCore/text/TextColumns.h"

#include <nlohmann/json.hpp>
#include <poll.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace tessarune {

namespace {

void printLine(std::FILE* stream, std::string_view text) {
    std::fputs((Text::printable(text) + "\n").c_str(), stream);
}

bool readerWentAway() {
    pollfd output{fileno(stdout), POLLOUT, 0};
    return poll(&output, 1, 0) > 0 && (output.revents & (POLLERR | POLLHUP)) != 0;
}

} // namespace

void printText(std::string_view text) {
    printLine(stdout, text);
}

void printJSON(const nlohmann::ordered_json& object) {
    std::puts(jsonLine(object).c_str());
}

std::string jsonLine(const nlohmann::ordered_json& object) {
    std::string line = object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    if (Text::printable(line) == line)
        return line;
    std::string safe;
    for (const char32_t codePoint : Text::codePoints(line)) {
        std::string character;
        Text::append(character, codePoint);
        if (Text::printable(character) != character) {
            std::array<char, 16> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04x",
                          static_cast<unsigned>(codePoint));
            character = escape.data();
        }
        safe += character;
    }
    return safe;
}

void printNotice(std::string_view text) {
    printLine(stderr, text);
}

void printProblem(std::string_view text) {
    printLine(stderr, "tessarune-terminal: " + std::string(text));
}

std::string shortID(const UUID& id) {
    constexpr std::size_t characters = 8;
    return id.text().substr(0, characters);
}

std::string modelStateText(bool isInstalled, bool isRemovable, const std::string& damage) {
    if (!damage.empty())
        return localized("damaged: %@", {damage});
    if (!isInstalled)
        return localized("can be downloaded");
    return isRemovable ? localized("installed") : localized("installed, came with the program");
}

std::string percentText(int percent) {
    return std::to_string(percent) + " %";
}

void rewriteLine(std::string_view text) {
    std::fprintf(stderr, "\r\033[K%s", Text::printableLine(text).c_str());
}

int statusOfOutput(int status) {
    const bool wasLostBefore = std::ferror(stdout) != 0;
    errno = 0;
    const bool isLost = std::fflush(stdout) != 0;
    if ((!isLost && !wasLostBefore) || readerWentAway())
        return status;
    const std::string reason =
        isLost && errno != 0 ? systemMessage(errno) : localized("part of it was lost");
    printProblem(localized("The output could not be written: %@", {reason}));
    return status == static_cast<int>(ExitStatus::ok) ? static_cast<int>(ExitStatus::ioError)
                                                      : status;
}

} // namespace tessarune
