// StringsTable: a small recursive-descent reader for strings files.
#include "kit/StringsTable.h"

#include "common/Utf8Encoding.h"

#include <cctype>
#include <fstream>
#include <sstream>

namespace kit {

namespace {

class Reader {
public:
    explicit Reader(std::string_view text) : m_text(text) {}

    bool atEnd()
    {
        skipSpaceAndComments();
        return m_pos >= m_text.size();
    }
    bool expect(char c)
    {
        skipSpaceAndComments();
        if (m_pos < m_text.size() && m_text[m_pos] == c) {
            ++m_pos;
            return true;
        }
        return fail(std::string("expected '") + c + "'");
    }
    bool token(std::string& out)
    {
        skipSpaceAndComments();
        if (m_pos >= m_text.size())
            return fail("unexpected end of file");
        if (m_text[m_pos] == '"')
            return quoted(out);
        const std::size_t start = m_pos;
        while (m_pos < m_text.size()
            && (std::isalnum(static_cast<unsigned char>(m_text[m_pos])) || m_text[m_pos] == '_'
                || m_text[m_pos] == '.'))
            ++m_pos;
        if (m_pos == start)
            return fail("expected a quoted string");
        out.assign(m_text.substr(start, m_pos - start));
        return true;
    }
    std::string error() const { return "line " + std::to_string(m_line) + ": " + m_error; }

private:
    bool fail(std::string message)
    {
        if (m_error.empty())
            m_error = std::move(message);
        return false;
    }
    void advance()
    {
        if (m_text[m_pos] == '\n')
            ++m_line;
        ++m_pos;
    }
    void skipSpaceAndComments()
    {
        while (m_pos < m_text.size()) {
            if (std::isspace(static_cast<unsigned char>(m_text[m_pos]))) {
                advance();
            } else if (m_text.substr(m_pos, 2) == "//") {
                while (m_pos < m_text.size() && m_text[m_pos] != '\n')
                    ++m_pos;
            } else if (m_text.substr(m_pos, 2) == "/*") {
                m_pos += 2;
                while (m_pos < m_text.size() && m_text.substr(m_pos, 2) != "*/")
                    advance();
                m_pos = std::min(m_text.size(), m_pos + 2);
            } else {
                return;
            }
        }
    }
    bool hex4(unsigned& code)
    {
        if (m_pos + 4 > m_text.size())
            return fail("short \\u escape");
        code = 0;
        for (int i = 0; i < 4; ++i) {
            const char h = m_text[m_pos++];
            if (!std::isxdigit(static_cast<unsigned char>(h)))
                return fail("bad \\u escape");
            code = code * 16
                + unsigned(std::isdigit(static_cast<unsigned char>(h)) ? h - '0' : std::tolower(h) - 'a' + 10);
        }
        return true;
    }
    // A surrogate pair written as two escapes is one character; a surrogate without its other
    // half cannot be encoded and becomes U+FFFD, as broken text does elsewhere.
    bool unicodeEscape(std::string& out)
    {
        unsigned code = 0;
        if (!hex4(code))
            return false;
        if (common::isHighSurrogate(code)
            && (m_text.compare(m_pos, 2, "\\u") == 0 || m_text.compare(m_pos, 2, "\\U") == 0)) {
            const std::size_t mark = m_pos;
            m_pos += 2;
            unsigned low = 0;
            if (!hex4(low))
                return false;
            if (common::isLowSurrogate(low)) {
                common::appendUtf8(out, common::codePointOfSurrogates(code, low));
                return true;
            }
            m_pos = mark;
        }
        common::appendUtf8(out, code);
        return true;
    }
    bool escape(std::string& out)
    {
        if (m_pos >= m_text.size())
            return fail("unterminated string");
        const char c = m_text[m_pos++];
        switch (c) {
        case 'n': out += '\n'; return true;
        case 't': out += '\t'; return true;
        case 'r': out += '\r'; return true;
        case '"':
        case '\\':
        case '\'': out += c; return true;
        case 'u':
        case 'U': return unicodeEscape(out);
        default: return fail(std::string("unknown escape \\") + c);
        }
    }
    bool quoted(std::string& out)
    {
        ++m_pos;
        out.clear();
        while (m_pos < m_text.size() && m_text[m_pos] != '"') {
            if (m_text[m_pos] == '\\') {
                ++m_pos;
                if (!escape(out))
                    return false;
            } else {
                out += m_text[m_pos];
                advance();
            }
        }
        if (m_pos >= m_text.size())
            return fail("unterminated string");
        ++m_pos;
        return true;
    }

    std::string_view m_text;
    std::size_t m_pos = 0;
    int m_line = 1;
    std::string m_error;
};

} // namespace

std::optional<StringsTable> StringsTable::parse(std::string_view text, std::string* error)
{
    StringsTable table;
    Reader reader(text);
    while (!reader.atEnd()) {
        std::string key, value;
        const bool ok = reader.token(key) && reader.expect('=') && reader.token(value) && reader.expect(';');
        if (!ok) {
            if (error)
                *error = reader.error();
            return std::nullopt;
        }
        table.m_values[key] = value;
    }
    return table;
}

std::optional<StringsTable> StringsTable::load(const std::string& path, std::string* error)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        if (error)
            *error = "cannot read " + path;
        return std::nullopt;
    }
    std::ostringstream text;
    text << in.rdbuf();
    std::string message;
    auto table = parse(text.str(), &message);
    if (!table && error)
        *error = path + ": " + message;
    return table;
}

const std::string* StringsTable::find(const std::string& key) const
{
    auto it = m_values.find(key);
    return it == m_values.end() ? nullptr : &it->second;
}

} // namespace kit
