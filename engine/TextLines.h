// TextLines: walking a text line by line, as the log and brush package readers do.
#pragma once

#include <string_view>

namespace engine {

/// The text up to the next line feed (without it), taken off the front of `text`.
inline std::string_view takeLine(std::string_view& text)
{
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view {} : text.substr(end + 1);
    return line;
}

} // namespace engine
