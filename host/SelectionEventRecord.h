// SelectionEventRecord: the fixed event record that selection tools hand to the
// engine's action recorder and that the host hands back for replay.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// One recorded selection event. The first 13 words keep the byte offsets the
/// action log and older hosts rely on; the two strings follow in the engine's
/// own string type, which every module of a process shares. On this 64-bit
/// build the strings' 8-byte alignment puts `text` at 56 and `name` at 88 and
/// makes the record 120 bytes; the word at 52 is padding, kept zero.
struct SelectionEventRecord {
    std::uint32_t reserved0 = 0;
    std::uint32_t reserved1 = 0;
    std::int32_t kind = 0; ///< 90 for every selection event
    std::uint32_t reserved2 = 0;
    float param0 = 0; ///< selection-mask layer id when the event was made
    float param1 = 0;
    float param2 = 0; ///< tool number
    float param3 = 0;
    float param4 = 0;
    float param5 = 0;
    float param6 = 0;
    float param7 = 0;
    float param8 = 0;
    std::uint32_t padding = 0; ///< what the strings' alignment leaves; zero so records compare by bytes
    std::string text; ///< tool-specific parameter text
    std::string name; ///< "Selection"
};

/// The kind every selection event carries.
inline constexpr std::int32_t kSelectionEventKind = 90;

static_assert(offsetof(SelectionEventRecord, reserved0) == 0);
static_assert(offsetof(SelectionEventRecord, reserved1) == 4);
static_assert(offsetof(SelectionEventRecord, kind) == 8);
static_assert(offsetof(SelectionEventRecord, reserved2) == 12);
static_assert(offsetof(SelectionEventRecord, param0) == 16);
static_assert(offsetof(SelectionEventRecord, param1) == 20);
static_assert(offsetof(SelectionEventRecord, param2) == 24);
static_assert(offsetof(SelectionEventRecord, param3) == 28);
static_assert(offsetof(SelectionEventRecord, param4) == 32);
static_assert(offsetof(SelectionEventRecord, param5) == 36);
static_assert(offsetof(SelectionEventRecord, param6) == 40);
static_assert(offsetof(SelectionEventRecord, param7) == 44);
static_assert(offsetof(SelectionEventRecord, param8) == 48);
static_assert(offsetof(SelectionEventRecord, padding) == 52);
static_assert(offsetof(SelectionEventRecord, text) == 56 && sizeof(std::string) == 32);
static_assert(offsetof(SelectionEventRecord, name) == 88);
static_assert(sizeof(SelectionEventRecord) == 120);
static_assert(sizeof(float) == 4 && sizeof(std::int32_t) == 4);
