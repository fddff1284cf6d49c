// Fuzz target: any bytes as a PNG file. A read either fails with a reason or yields exactly
// width x height x 4 bytes within the limits it was given.
#include "kit/PngReader.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::FILE* file = fmemopen(const_cast<std::uint8_t*>(data), size, "rb");
    if (!file)
        return 0;
    // Small bounds keep each run quick; the checks against them are what is fuzzed.
    constexpr std::uint64_t kMaxPixels = 1 << 20;
    constexpr std::uint32_t kMaxSide = 4096;
    kit::PngReader reader(kMaxPixels, kMaxSide);
    const bool read = reader.read(file);
    std::fclose(file);
    if (read) {
        const std::uint64_t pixels = std::uint64_t { reader.width() } * reader.height();
        if (pixels > kMaxPixels || reader.width() > kMaxSide || reader.pixels().size() != pixels * 4)
            std::abort();
    } else if (reader.problem().empty()) {
        std::abort();
    }
    return 0;
}
