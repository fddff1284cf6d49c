// JsonRecordWriter: writes one selection event record as a single-line JSON object.
#include "engine/JsonRecordWriter.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace engine {

namespace {

void appendHex(std::string& out, std::uint32_t value, int digits)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    for (int shift = (digits - 1) * 4; shift >= 0; shift -= 4)
        out += kDigits[(value >> shift) & 0xf];
}

void appendNonFinite(std::string& out, float value)
{
    std::uint32_t bits = std::bit_cast<std::uint32_t>(value);
    if (std::isinf(value)) {
        out += value > 0 ? "\"inf\"" : "\"-inf\"";
    } else if (bits == 0x7fc00000u) {
        out += "\"nan\"";
    } else {
        out += "\"nan:0x";
        appendHex(out, bits, 8);
        out += '"';
    }
}

} // namespace

std::string JsonRecordWriter::write(const SelectionEventRecord& record)
{
    const std::array<float, 9> params { record.param0, record.param1, record.param2, record.param3, record.param4,
        record.param5, record.param6, record.param7, record.param8 };
    std::string out = "{\"kind\":" + std::to_string(record.kind);
    for (std::size_t i = 0; i < params.size(); ++i) {
        out += ",\"param" + std::to_string(i) + "\":";
        appendFloat(out, params[i]);
    }
    out += ",\"text\":";
    appendString(out, record.text);
    out += ",\"name\":";
    appendString(out, record.name);
    out += '}';
    return out;
}

void JsonRecordWriter::appendFloat(std::string& out, float value)
{
    if (!std::isfinite(value)) {
        appendNonFinite(out, value);
        return;
    }
    std::array<char, 64> buffer {};
    auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    out.append(buffer.data(), result.ptr);
}

void JsonRecordWriter::appendString(std::string& out, std::string_view text)
{
    out += '"';
    for (char c : text) {
        auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (byte < 0x20) {
            out += "\\u00";
            appendHex(out, byte, 2);
        } else {
            out += c;
        }
    }
    out += '"';
}

} // namespace engine
