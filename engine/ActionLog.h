// ActionLog: the recorded selection events of a document, saved and loaded as JSON lines.
#pragma once

#include "engine/EngineExport.h"
#include "host/SelectionEventRecord.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

/// One JSON object per line, members kind, param0 ... param8, text, name; floats read back to
/// the same bits (see JsonRecordWriter for how non-finite values are written). Loading accepts
/// members in any order and blank lines, and refuses anything else with "source:line: message",
/// leaving the log as it was.
class ENGINE_API ActionLog {
public:
    static constexpr std::size_t kMaxLineBytes = 4u << 20;
    static constexpr std::size_t kMaxStringBytes = 1u << 20;
    static constexpr std::size_t kMaxFileBytes = 256u << 20;

    /// Appends a copy of the record; false, appending nothing, when a string exceeds the limit.
    bool append(const SelectionEventRecord& record);
    const std::vector<SelectionEventRecord>& records() const;
    std::size_t size() const;
    void clear();

    /// The log as it is saved; the host writes it to disk (whole or not at all).
    std::string toJsonLines() const;
    /// Replaces the records with those in text, or returns false with error set and the log
    /// unchanged. sourceName starts every error message.
    bool parseJsonLines(std::string_view text, std::string_view sourceName, std::string& error);
    bool load(const std::filesystem::path& path, std::string& error);

private:
    std::vector<SelectionEventRecord> m_records;
};

} // namespace engine
