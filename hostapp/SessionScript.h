// SessionScript: a parsed session script, one command a line, checked before anything runs.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hostapp {

/// A word as an error message quotes it: at most 80 characters (whole UTF-8 characters), so
/// that a bad line of megabytes gives a message of a line.
std::string quotedWord(std::string_view word);

struct SessionCommand {
    int line = 0;
    std::string name;
    std::vector<double> numbers; ///< numeric arguments, in order
    std::string text; ///< the file or text argument, when the command takes one
};

class SessionScript {
public:
    /// Parses the script; on the first unknown command or bad argument returns nothing and
    /// sets `error` to "SOURCE:LINE: message".
    static std::optional<SessionScript> parse(std::string_view text, const std::string& source, std::string& error);
    static std::optional<SessionScript> load(const std::string& path, std::string& error);
    /// A script the host makes itself. Each command's line is its position, and a file name
    /// stays a file name whatever characters it holds: it is never parsed as script text.
    static SessionScript fromCommands(std::string source, std::vector<SessionCommand> commands);

    const std::vector<SessionCommand>& commands() const { return m_commands; }
    const std::string& source() const { return m_source; }

private:
    std::string m_source;
    std::vector<SessionCommand> m_commands;
};

} // namespace hostapp
