// PolygonVertexText: writing and reading the vertex text of polygon records.
#include "Classes/Selection/PolygonVertexText.h"

#include <cctype>
#include <climits>
#include <cmath>
#include <cstdint>

namespace {

int truncated(float v)
{
    // The tools hand over on-canvas coordinates; anything else is held to the int range.
    if (std::isnan(v))
        return 0;
    if (v >= 2147483647.0f)
        return INT_MAX;
    if (v <= -2147483648.0f)
        return INT_MIN;
    return static_cast<int>(v);
}

} // namespace

std::string FormatPolygonVertexText(const std::vector<kit::Point>& vertices)
{
    std::string text;
    for (const kit::Point& p : vertices) {
        text += std::to_string(truncated(p.x));
        text += kPolygonTextSeparator;
        text += std::to_string(truncated(p.y));
        text += kPolygonTextSeparator;
    }
    return text;
}

int LeadingIntegerValue(std::string_view text)
{
    std::size_t i = 0;
    while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i])))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == '+' || text[i] == '-'))
        negative = text[i++] == '-';
    std::int64_t value = 0;
    for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])); ++i) {
        value = value * 10 + (text[i] - '0');
        if (value > std::int64_t(INT_MAX) + 1)
            value = std::int64_t(INT_MAX) + 1; // the digits go on, the value stays held
    }
    if (negative)
        return value > INT_MAX ? INT_MIN : -static_cast<int>(value);
    return value > INT_MAX ? INT_MAX : static_cast<int>(value);
}

bool ParsePolygonVertexText(std::string_view text, int count, std::vector<kit::Point>& vertices)
{
    vertices.clear();
    if (count <= 0)
        return false;
    // The vertex list is allocated only once the text is known to hold every vertex.
    const std::size_t needed = std::size_t(count) * 2;
    std::vector<std::string_view> components;
    std::size_t start = 0;
    while (components.size() < needed) {
        const std::size_t end = text.find(kPolygonTextSeparator, start);
        if (end == std::string_view::npos) {
            // What follows the last separator is a component too, unless it is empty.
            if (start < text.size())
                components.push_back(text.substr(start));
            break;
        }
        components.push_back(text.substr(start, end - start));
        start = end + kPolygonTextSeparator.size();
    }
    if (components.size() < needed)
        return false;
    vertices.reserve(std::size_t(count));
    for (std::size_t i = 0; i < needed; i += 2)
        vertices.push_back(
            { float(LeadingIntegerValue(components[i])), float(LeadingIntegerValue(components[i + 1])) });
    return true;
}
