// ActionLog: the recorded selection events of a document, saved and loaded as JSON lines.
#include "engine/ActionLog.h"

#include "engine/JsonRecordReader.h"
#include "engine/JsonRecordWriter.h"
#include "engine/TextLines.h"

#include <fstream>
#include <system_error>

namespace engine {

namespace {

std::string located(std::string_view source, std::size_t line, std::string_view message)
{
    return std::string(source) + ":" + std::to_string(line) + ": " + std::string(message);
}

bool isBlank(std::string_view line) { return line.find_first_not_of(" \t\r") == std::string_view::npos; }

} // namespace

bool ActionLog::append(const SelectionEventRecord& record)
{
    if (record.text.size() > kMaxStringBytes || record.name.size() > kMaxStringBytes)
        return false;
    m_records.push_back(record);
    return true;
}

const std::vector<SelectionEventRecord>& ActionLog::records() const { return m_records; }

std::size_t ActionLog::size() const { return m_records.size(); }

void ActionLog::clear() { m_records.clear(); }

std::string ActionLog::toJsonLines() const
{
    std::string out;
    for (const SelectionEventRecord& record : m_records) {
        out += JsonRecordWriter::write(record);
        out += '\n';
    }
    return out;
}

bool ActionLog::parseJsonLines(std::string_view text, std::string_view sourceName, std::string& error)
{
    std::vector<SelectionEventRecord> records;
    std::size_t lineNumber = 0;
    while (!text.empty()) {
        ++lineNumber;
        std::string_view line = takeLine(text);
        if (line.size() > kMaxLineBytes) {
            error = located(sourceName, lineNumber, "line longer than " + std::to_string(kMaxLineBytes) + " bytes");
            return false;
        }
        if (isBlank(line))
            continue;
        JsonRecordReader reader(line, kMaxStringBytes);
        if (!reader.read(records.emplace_back())) {
            error = located(sourceName, lineNumber, reader.error());
            return false;
        }
    }
    m_records = std::move(records);
    return true;
}

bool ActionLog::load(const std::filesystem::path& path, std::string& error)
{
    std::error_code ec;
    std::uintmax_t size = std::filesystem::file_size(path, ec);
    if (ec) {
        error = path.string() + ": cannot read the action log: " + ec.message();
        return false;
    }
    if (size > kMaxFileBytes) {
        error = path.string() + ": action log larger than " + std::to_string(kMaxFileBytes) + " bytes";
        return false;
    }
    std::string text(static_cast<std::size_t>(size), '\0');
    std::ifstream in(path, std::ios::binary);
    in.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (!in || in.gcount() != static_cast<std::streamsize>(size)) {
        error = path.string() + ": cannot read the action log";
        return false;
    }
    return parseJsonLines(text, path.string(), error);
}

} // namespace engine
