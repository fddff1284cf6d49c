// PolygonVertexText: the vertex list of a recorded polygon as text, "x,#,y,#," for each vertex.
#pragma once

#include "kit/Geometry.h"

#include <string>
#include <string_view>
#include <vector>

/// The separator that follows every number of the text, the last one included.
inline constexpr std::string_view kPolygonTextSeparator = ",#,";

/// Each vertex's x and y truncated toward zero, each followed by ",#,".
std::string FormatPolygonVertexText(const std::vector<kit::Point>& vertices);
/// The first `count` vertices of the text: components 2i and 2i + 1 between separators, each
/// read as its leading integer (0 when it has none). False, leaving `vertices` empty, when the
/// text holds fewer than 2 x count components.
bool ParsePolygonVertexText(std::string_view text, int count, std::vector<kit::Point>& vertices);
/// The leading integer of a text as the platform's string conversion reads it: blanks skipped,
/// an optional sign, the digits; 0 when there are none; held to the int range.
int LeadingIntegerValue(std::string_view text);
