// HostPicture: the host's own edits of the picture and the selection, each one undo step and one log record.
#pragma once

#include "engine/Document.h"
#include "hostapp/PictureFilter.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace hostapp {

/// Opening a picture, filtering it and the selection commands (all, none, invert) are the host's
/// actions, not the plug-in's: the action log keeps them as host records (kinds kOpenKind to
/// kInvertSelectionKind, name "Host") between the
/// plug-in's selection records, and replay applies them here instead of handing them to the
/// plug-in, so that a replayed log gives the same picture bit for bit.
class HostPicture {
public:
    static constexpr std::int32_t kOpenKind = 200; ///< text: the picture's absolute path
    static constexpr std::int32_t kFilterKind = 201; ///< text: the filter as PictureFilter::text()
    static constexpr std::int32_t kSelectAllKind = 202; ///< no text
    static constexpr std::int32_t kSelectNoneKind = 203; ///< no text
    static constexpr std::int32_t kInvertSelectionKind = 204; ///< no text
    static constexpr const char* kRecordName = "Host";

    explicit HostPicture(engine::Document& document) : m_document(document) {}

    static bool isHostRecord(const SelectionEventRecord& record);

    /// A PNG becomes the canvas picture, the canvas taking its size. A file that cannot be used
    /// is refused naming it and why (missing, not a PNG, unreadable, too large).
    bool open(const std::filesystem::path& path, std::string& problem);
    bool applyFilter(const PictureFilter& filter, std::string& problem);
    /// select-all, select-none or invert-selection (the session commands' names); false for any
    /// other name.
    bool changeSelection(const std::string& command);
    /// The paint layer as an RGBA PNG of the canvas size.
    bool save(const std::filesystem::path& path, std::string& problem) const;
    /// Carries out a host record again (and records it again, as the plug-in does its own).
    bool play(const SelectionEventRecord& record, std::string& problem);

private:
    void record(std::int32_t kind, const std::string& text);

    engine::Document& m_document;
};

} // namespace hostapp
