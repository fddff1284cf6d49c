// EngineTestSupport: small helpers shared by the engine tests.
#include "tests/engine/EngineTestSupport.h"

#include <algorithm>
#include <unistd.h>

namespace enginetest {

std::vector<std::uint8_t> whiteImage(int width, int height, std::uint8_t alpha)
{
    return std::vector<std::uint8_t>(static_cast<std::size_t>(width) * height * 4, alpha);
}

int maskAt(const engine::Document& document, int x, int y)
{
    return document.maskAlpha()[static_cast<std::size_t>(y) * document.canvasWidth() + x];
}

std::size_t selectedCount(const engine::Document& document)
{
    std::vector<std::uint8_t> mask = document.maskAlpha();
    return static_cast<std::size_t>(std::count_if(mask.begin(), mask.end(), [](std::uint8_t a) { return a != 0; }));
}

std::filesystem::path shippedBrushDirectory() { return ENGINE_TEST_BRUSH_DIR; }

std::filesystem::path scratchDirectory(const char* name)
{
    std::filesystem::path dir
        = std::filesystem::temp_directory_path() / ("engine_tests_" + std::to_string(getpid())) / name;
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    return dir;
}

} // namespace enginetest
