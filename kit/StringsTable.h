// StringsTable: a parsed `.strings` file of "key" = "value"; pairs.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kit {

class StringsTable {
public:
    /// Parses the text of a strings file: quoted (or bare-word) keys and quoted values,
    /// `/* */` and `//` comments, the escapes \" \\ \n \t \r and \uXXXX. On a syntax error
    /// returns nothing and, if asked, says where ("line N: message").
    static std::optional<StringsTable> parse(std::string_view text, std::string* error = nullptr);
    /// Reads and parses a file; nothing when it cannot be read or parsed.
    static std::optional<StringsTable> load(const std::string& path, std::string* error = nullptr);

    /// The value for the key, or nothing.
    const std::string* find(const std::string& key) const;
    std::size_t size() const { return m_values.size(); }

private:
    std::map<std::string, std::string> m_values;
};

} // namespace kit
