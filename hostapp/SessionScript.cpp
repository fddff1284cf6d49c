// SessionScript: the command table and the argument checks.
#include "hostapp/SessionScript.h"

#include <charconv>
#include <cmath>
#include <fstream>
#include <sstream>

namespace hostapp {

namespace {

enum class Arg {
    Extent,  ///< a whole number of pixels or points from 1 to kMaxExtent
    Coord,   ///< a whole number within +-kMaxCoord
    Seconds, ///< a finite number of seconds from 0 to kMaxSeconds
    Path,    ///< the rest of the line
};

constexpr double kMaxExtent = 30000;
constexpr double kMaxCoord = 1e9;
constexpr double kMaxSeconds = 86400;

struct Syntax {
    const char* name;
    std::vector<Arg> args;
    const char* usage;
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
        { "save-mask", { Arg::Path }, "save-mask FILE" },
        { "save-log", { Arg::Path }, "save-log FILE" },
        { "replay", { Arg::Path }, "replay FILE" },
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

std::string_view trim(std::string_view s)
{
    const auto first = s.find_first_not_of(" \t\r");
    if (first == std::string_view::npos)
        return {};
    const auto last = s.find_last_not_of(" \t\r");
    return s.substr(first, last - first + 1);
}

/// Checks one numeric argument; an empty result means it is fine.
std::string checkNumber(const std::string& word, Arg kind, double& value)
{
    const char* end = word.data() + word.size();
    auto [ptr, ec] = std::from_chars(word.data(), end, value);
    if (ec != std::errc() || ptr != end || !std::isfinite(value))
        return "'" + word + "' is not a number";
    switch (kind) {
    case Arg::Extent:
        if (value != std::floor(value) || value < 1 || value > kMaxExtent)
            return "'" + word + "' must be a whole number from 1 to 30000";
        return {};
    case Arg::Coord:
        if (value != std::floor(value) || std::fabs(value) > kMaxCoord)
            return "'" + word + "' must be a whole number within +-1000000000";
        return {};
    case Arg::Seconds:
        if (value < 0 || value > kMaxSeconds)
            return "'" + word + "' must be a number of seconds from 0 to 86400";
        return {};
    case Arg::Path:
        return {};
    }
    return {};
}

std::string parseCommand(std::string_view line, SessionCommand& command)
{
    const std::vector<std::string> parts = words(line);
    const Syntax* syntax = nullptr;
    for (const Syntax& s : commandTable()) {
        if (parts[0] == s.name)
            syntax = &s;
    }
    if (!syntax)
        return "unknown command '" + parts[0] + "'";
    command.name = parts[0];
    if (!syntax->args.empty() && syntax->args.front() == Arg::Path) {
        command.text = std::string(trim(trim(line).substr(parts[0].size())));
        return command.text.empty() ? "usage: " + std::string(syntax->usage) : std::string();
    }
    if (parts.size() - 1 != syntax->args.size())
        return "usage: " + std::string(syntax->usage);
    for (std::size_t i = 0; i < syntax->args.size(); ++i) {
        double value = 0;
        if (std::string problem = checkNumber(parts[i + 1], syntax->args[i], value); !problem.empty())
            return command.name + ": " + problem;
        command.numbers.push_back(value);
    }
    return {};
}

} // namespace

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
