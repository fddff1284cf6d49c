// Utf8: the few UTF-8 walks that text editing and drawing need.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kit {

/// The text with every byte that is not part of a well-formed UTF-8 sequence (overlong forms,
/// surrogates and values past U+10FFFF included) replaced by U+FFFD, so that cairo and the
/// editor only ever see valid text.
std::string sanitizedUtf8(std::string_view text);
/// The byte offset of the character after the one at `offset` (the size at the end). Assumes
/// valid UTF-8.
std::size_t nextCharacterOffset(std::string_view text, std::size_t offset);
/// The byte offset of the character before `offset` (0 at the start).
std::size_t previousCharacterOffset(std::string_view text, std::size_t offset);
/// The number of characters (code points) of valid UTF-8 text.
std::size_t characterCount(std::string_view text);

} // namespace kit
