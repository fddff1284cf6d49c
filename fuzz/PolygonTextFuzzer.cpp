// Fuzz target: any bytes as a polygon record's vertex text, with a count taken from the input.
#include "Classes/Selection/PolygonVertexText.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const int count = data[0] | (data[1] << 8);
    const std::string_view text(reinterpret_cast<const char*>(data + 2), size - 2);
    std::vector<kit::Point> vertices;
    if (ParsePolygonVertexText(text, count, vertices) && vertices.size() != std::size_t(count))
        __builtin_trap();
    return 0;
}
