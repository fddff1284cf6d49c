// SessionScript: the command table and the argument checks.
#include "hostapp/SessionScript.h"

#include "hostapp/PictureFilter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <fstream>
#include <sstream>

namespace hostapp {

namespace {

enum class Arg {
    Extent, ///< a whole number of pixels or points from 1 to kMaxExtent
    Coord, ///< a whole number within +-kMaxCoord
    Seconds, ///< a finite number of seconds from 0 to kMaxSeconds
    Point, ///< a window coordinate: any number within +-kMaxPoint
    Clicks, ///< a click count from 1 to kMaxClicks
    Key, ///< one key name or one character
    Rest, ///< the rest of the line
};

constexpr double kMaxExtent = 30000;
constexpr double kMaxCoord = 1e9;
constexpr double kMaxSeconds = 86400;
constexpr double kMaxPoint = 1e6;
constexpr double kMaxClicks = 9;

struct Syntax {
    const char* name;
    std::vector<Arg> args;
    const char* usage;
    std::size_t optional = 0; ///< how many of the last arguments may be left out
};

const std::vector<Syntax>& commandTable()
{
    static const std::vector<Syntax> table = {
        { "window", { Arg::Extent, Arg::Extent }, "window W H" },
        { "canvas", { Arg::Extent, Arg::Extent }, "canvas W H" },
        { "view", { Arg::Coord, Arg::Coord, Arg::Extent, Arg::Extent }, "view X Y W H" },
        { "viewsize", { Arg::Extent, Arg::Extent }, "viewsize W H" },
        { "layer-offset", { Arg::Coord, Arg::Coord }, "layer-offset X Y" },
        { "run", {}, "run" },
        { "stop", {}, "stop" },
        { "destroy", {}, "destroy" },
        { "wait", { Arg::Seconds }, "wait S" },
        { "undo", {}, "undo" },
        { "redo", {}, "redo" },
        { "save-mask", { Arg::Rest }, "save-mask FILE" },
        { "save-log", { Arg::Rest }, "save-log FILE" },
        { "save-window", { Arg::Rest }, "save-window FILE" },
        { "save-cursor", { Arg::Rest }, "save-cursor FILE" },
        { "replay", { Arg::Rest }, "replay FILE" },
        { "host-area", { Arg::Coord, Arg::Coord, Arg::Extent, Arg::Extent }, "host-area X Y W H" },
        { "down", { Arg::Point, Arg::Point, Arg::Clicks }, "down X Y [N]", 1 },
        { "drag", { Arg::Point, Arg::Point }, "drag X Y" },
        { "up", { Arg::Point, Arg::Point, Arg::Clicks }, "up X Y [N]", 1 },
        { "move", { Arg::Point, Arg::Point }, "move X Y" },
        { "rightdown", { Arg::Point, Arg::Point }, "rightdown X Y" },
        { "rightup", { Arg::Point, Arg::Point }, "rightup X Y" },
        { "click", { Arg::Point, Arg::Point }, "click X Y" },
        { "doubleclick", { Arg::Point, Arg::Point }, "doubleclick X Y" },
        { "key", { Arg::Key }, "key delete|return|escape|tab|CHARACTER" },
        { "type", { Arg::Rest }, "type TEXT" },
        { "open", { Arg::Rest }, "open FILE" },
        { "filter", { Arg::Rest }, "filter NAME [KEY=VALUE ...]" },
        { "save-picture", { Arg::Rest }, "save-picture FILE" },
        { "select-all", {}, "select-all" },
        { "select-none", {}, "select-none" },
        { "invert-selection", {}, "invert-selection" },
    };
    return table;
}

std::vector<std::string> words(std::string_view line)
{
    std::vector<std::string> out;
    std::istringstream in { std::string(line) };
    for (std::string w; in >> w;)
        out.push_back(w);
    return out;
}

// The same blanks that split a line into words, so that a line of blanks is an empty line.
constexpr std::string_view kBlanks = " \t\r\v\f";

std::string_view trim(std::string_view s)
{
    const auto first = s.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return {};
    const auto last = s.find_last_not_of(kBlanks);
    return s.substr(first, last - first + 1);
}

/// Checks one numeric argument; an empty result means it is fine.
std::string checkNumber(const std::string& word, Arg kind, double& value)
{
    const char* end = word.data() + word.size();
    auto [ptr, ec] = std::from_chars(word.data(), end, value);
    if (ec != std::errc() || ptr != end || !std::isfinite(value))
        return quotedWord(word) + " is not a number";
    switch (kind) {
    case Arg::Extent:
        if (value != std::floor(value) || value < 1 || value > kMaxExtent)
            return quotedWord(word) + " must be a whole number from 1 to 30000";
        return {};
    case Arg::Coord:
        if (value != std::floor(value) || std::fabs(value) > kMaxCoord)
            return quotedWord(word) + " must be a whole number within +-1000000000";
        return {};
    case Arg::Seconds:
        if (value < 0 || value > kMaxSeconds)
            return quotedWord(word) + " must be a number of seconds from 0 to 86400";
        return {};
    case Arg::Point:
        if (std::fabs(value) > kMaxPoint)
            return quotedWord(word) + " must be a coordinate within +-1000000";
        return {};
    case Arg::Clicks:
        if (value != std::floor(value) || value < 1 || value > kMaxClicks)
            return quotedWord(word) + " must be a click count from 1 to 9";
        return {};
    case Arg::Key:
    case Arg::Rest: return {};
    }
    return {};
}

/// The number of characters (UTF-8 code points) in a word.
std::size_t codePoints(const std::string& word)
{
    return std::size_t(
        std::count_if(word.begin(), word.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string checkKey(const std::string& word)
{
    for (const char* name : { "delete", "return", "escape", "tab" }) {
        if (word == name)
            return {};
    }
    return codePoints(word) == 1 ? std::string() : quotedWord(word) + " is neither a key name nor one character";
}

std::string parseCommand(std::string_view line, SessionCommand& command)
{
    const std::vector<std::string> parts = words(line);
    if (parts.empty())
        return "not a command";
    const Syntax* syntax = nullptr;
    for (const Syntax& s : commandTable()) {
        if (parts[0] == s.name)
            syntax = &s;
    }
    if (!syntax)
        return "unknown command " + quotedWord(parts[0]);
    command.name = parts[0];
    if (!syntax->args.empty() && syntax->args.front() == Arg::Rest) {
        command.text = std::string(trim(trim(line).substr(parts[0].size())));
        if (command.text.empty())
            return "usage: " + std::string(syntax->usage);
        std::string problem;
        if (command.name == "filter" && !PictureFilter::parse(command.text, problem))
            return command.name + ": " + problem;
        return {};
    }
    const std::size_t given = parts.size() - 1;
    if (given > syntax->args.size() || given + syntax->optional < syntax->args.size())
        return "usage: " + std::string(syntax->usage);
    if (!syntax->args.empty() && syntax->args.front() == Arg::Key) {
        command.text = parts[1];
        std::string problem = checkKey(parts[1]);
        return problem.empty() ? problem : command.name + ": " + problem;
    }
    for (std::size_t i = 0; i < given; ++i) {
        double value = 0;
        if (std::string problem = checkNumber(parts[i + 1], syntax->args[i], value); !problem.empty())
            return command.name + ": " + problem;
        command.numbers.push_back(value);
    }
    return {};
}

} // namespace

SessionScript SessionScript::fromCommands(std::string source, std::vector<SessionCommand> commands)
{
    SessionScript script;
    script.m_source = std::move(source);
    for (std::size_t i = 0; i < commands.size(); ++i)
        commands[i].line = int(i + 1);
    script.m_commands = std::move(commands);
    return script;
}

std::string quotedWord(std::string_view word)
{
    constexpr std::size_t kMaxQuoted = 80;
    std::size_t end = 0, characters = 0;
    while (end < word.size() && characters < kMaxQuoted) {
        ++end;
        while (end < word.size() && (static_cast<unsigned char>(word[end]) & 0xC0) == 0x80)
            ++end;
        ++characters;
    }
    return "'" + std::string(word.substr(0, end)) + (end < word.size() ? "...'" : "'");
}

std::optional<SessionScript> SessionScript::parse(std::string_view text, const std::string& source, std::string& error)
{
    SessionScript script;
    script.m_source = source;
    int lineNumber = 0;
    std::size_t start = 0;
    while (start <= text.size()) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        std::string_view line = text.substr(start, end - start);
        start = end + 1;
        ++lineNumber;
        line = trim(line.substr(0, std::min(line.find('#'), line.size())));
        if (line.empty())
            continue;
        SessionCommand command;
        command.line = lineNumber;
        if (std::string problem = parseCommand(line, command); !problem.empty()) {
            error = source + ":" + std::to_string(lineNumber) + ": " + problem;
            return std::nullopt;
        }
        script.m_commands.push_back(std::move(command));
    }
    return script;
}

std::optional<SessionScript> SessionScript::load(const std::string& path, std::string& error)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        error = path + ": cannot read the session script";
        return std::nullopt;
    }
    std::ostringstream text;
    text << in.rdbuf();
    return parse(text.str(), path, error);
}

} // namespace hostapp
