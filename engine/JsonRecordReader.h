// JsonRecordReader: reads one selection event record from a single-line JSON object.
#pragma once

#include "host/SelectionEventRecord.h"

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace engine {

/// Reads what JsonRecordWriter writes, members in any order. Every member must be present exactly
/// once and no other member may appear; kind must be a 32-bit integer, the params numbers or the
/// writer's non-finite strings. Bytes outside escapes pass through unchanged. Nothing is trusted:
/// every refusal leaves a message naming what is wrong and the column where it was found.
class JsonRecordReader {
public:
    JsonRecordReader(std::string_view line, std::size_t maxStringBytes);

    /// Fills record and returns true, or returns false and leaves the reason in error().
    bool read(SelectionEventRecord& record);
    const std::string& error() const;

private:
    static constexpr int kMemberCount = 12;

    bool readMember(SelectionEventRecord& record, std::bitset<kMemberCount>& seen);
    bool readValue(int member, SelectionEventRecord& record);
    bool readString(std::string& out, std::size_t limit);
    bool readEscape(std::string& out);
    bool readCodeUnit(std::uint32_t& unit);
    bool readNumberToken(std::string_view& token, bool& isInteger);
    bool readInt32(std::int32_t& value, std::string_view member);
    bool readFloat(float& value, std::string_view member);
    static bool decodeNonFinite(std::string_view text, float& value);
    /// The nearest float of a number token too small in magnitude for one; false when it overflows.
    static bool readTinyFloat(std::string_view token, float& value);
    void skipSpace();
    bool expect(char c);
    bool fail(std::string message);

    std::string_view m_text;
    std::size_t m_pos = 0;
    std::size_t m_maxStringBytes;
    std::string m_error;
};

} // namespace engine
