// JsonRecordWriter: writes one selection event record as a single-line JSON object.
#pragma once

#include "host/SelectionEventRecord.h"

#include <string>
#include <string_view>

namespace engine {

/// Members come in the order kind, param0 ... param8, text, name. A finite float is written in
/// the shortest form that reads back to the same bits, -0 included. A non-finite float is written
/// as a string: "inf", "-inf", "nan" for the default quiet NaN (bits 0x7fc00000), and
/// "nan:0xHHHHHHHH" with the exact bit pattern for any other NaN. Strings escape '"', '\\' and
/// control characters (as \u00XX); every other byte, UTF-8 included, is written as it is.
class JsonRecordWriter {
public:
    static std::string write(const SelectionEventRecord& record);
    static void appendFloat(std::string& out, float value);
    static void appendString(std::string& out, std::string_view text);
};

} // namespace engine
