// Images: PNG files written and read back, and files that are not images.
#include "kit/Image.h"
#include "kit/Window.h"
#include "tests/support/ChildPeak.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <png.h>
#include <sys/resource.h>
#include <zlib.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <random>
#include <vector>

namespace {

TEST(ImagePng, OpaqueAndClearPixelsSurviveARoundTripExactly)
{
    TempDir dir;
    const std::vector<std::uint8_t> rgba
        = { 255, 0, 0, 255, 0, 0, 0, 0, 12, 34, 56, 255, 0, 0, 0, 255, 255, 255, 255, 255, 0, 0, 0, 0 };
    auto image = kit::Image::imageWithRGBA(3, 2, rgba.data());
    ASSERT_TRUE(image);
    const std::string path = (dir.path() / "a.png").string();
    ASSERT_TRUE(image->writePNG(path));
    auto back = kit::Image::imageWithContentsOfFile(path);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->pixelsWide(), 3);
    EXPECT_EQ(back->pixelsHigh(), 2);
    EXPECT_EQ(back->rgba(), rgba);
}

TEST(ImagePng, TranslucentPixelsComeBackPremultipliedWithinOneStep)
{
    TempDir dir;
    // Premultiplied white at alpha 128, and a premultiplied colour at alpha 200.
    const std::vector<std::uint8_t> rgba = { 128, 128, 128, 128, 100, 50, 150, 200 };
    auto image = kit::Image::imageWithRGBA(2, 1, rgba.data());
    const std::string path = (dir.path() / "t.png").string();
    ASSERT_TRUE(image->writePNG(path));
    auto back = kit::Image::imageWithContentsOfFile(path);
    ASSERT_TRUE(back);
    for (std::size_t i = 0; i < rgba.size(); ++i)
        EXPECT_NEAR(back->rgba()[i], rgba[i], 1) << "byte " << i;
}

TEST(ImagePng, GreyImagesAreWrittenAsOneChannel)
{
    TempDir dir;
    const std::vector<std::uint8_t> gray = { 0, 64, 128, 255 };
    const std::string path = (dir.path() / "g.png").string();
    ASSERT_TRUE(kit::Image::writeGrayPNG(path, 2, 2, gray.data()));

    png_image info {};
    info.version = PNG_IMAGE_VERSION;
    ASSERT_TRUE(png_image_begin_read_from_file(&info, path.c_str()));
    EXPECT_EQ(info.format, PNG_FORMAT_GRAY);
    EXPECT_EQ(info.width, 2u);
    png_image_free(&info);

    auto back = kit::Image::imageWithContentsOfFile(path);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->rgba()[4 * 1 + 0], 64);
    EXPECT_EQ(back->rgba()[4 * 3 + 3], 255);
}

TEST(ImagePng, UnreadableFilesAndBadSizesGiveNoImage)
{
    TempDir dir;
    EXPECT_FALSE(kit::Image::imageWithContentsOfFile((dir.path() / "absent.png").string()));
    EXPECT_FALSE(kit::Image::imageWithContentsOfFile(dir.write("fake.png", "not a png at all").string()));
    // A real PNG signature followed by garbage.
    EXPECT_FALSE(kit::Image::imageWithContentsOfFile(dir.write("cut.png", "\x89PNG\r\n\x1a\n garbage").string()));
    const std::uint8_t pixel[4] = {};
    EXPECT_FALSE(kit::Image::imageWithRGBA(0, 1, pixel));
    EXPECT_FALSE(kit::Image::imageWithRGBA(-1, -1, pixel));
    EXPECT_FALSE(kit::Image::imageWithRGBA(1 << 20, 1 << 20, pixel));
    std::string error;
    EXPECT_FALSE(kit::Image::writeGrayPNG((dir.path() / "no/such/folder.png").string(), 1, 1, pixel, &error));
    EXPECT_FALSE(error.empty());
}

// A save that fails half way (here the file size limit) must keep the file that was there,
// and leave nothing beside it.
TEST(ImagePng, AFailedSaveKeepsTheEarlierFileWhole)
{
    TempDir dir;
    const std::string path = (dir.path() / "kept.png").string();
    const std::uint8_t small[4] = { 10, 20, 30, 40 };
    ASSERT_TRUE(kit::Image::writeGrayPNG(path, 2, 2, small));
    const auto before = std::filesystem::file_size(path);

    std::vector<std::uint8_t> noise(512 * 512);
    std::mt19937 random(3);
    for (auto& v : noise)
        v = std::uint8_t(random());
    rlimit saved {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
    rlimit limit = saved;
    limit.rlim_cur = 4096;
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    std::string error;
    const bool wrote = kit::Image::writeGrayPNG(path, 512, 512, noise.data(), &error);
    setrlimit(RLIMIT_FSIZE, &saved);
    std::signal(SIGXFSZ, oldHandler);

    EXPECT_FALSE(wrote);
    EXPECT_NE(error.find(path), std::string::npos) << error;
    EXPECT_EQ(std::filesystem::file_size(path), before);
    auto back = kit::Image::imageWithContentsOfFile(path);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->pixelsWide(), 2);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1) << "no file left beside it";

    ASSERT_TRUE(kit::Image::writeGrayPNG(path, 512, 512, noise.data(), &error)) << error;
    EXPECT_EQ(kit::Image::imageWithContentsOfFile(path)->pixelsWide(), 512);
}

// A PNG chunk: length, type, data and the CRC over type and data.
std::string chunk(const std::string& type, const std::string& data)
{
    std::string out;
    const auto put32 = [&out](std::uint32_t v) {
        for (int shift = 24; shift >= 0; shift -= 8)
            out += char((v >> shift) & 0xFF);
    };
    put32(std::uint32_t(data.size()));
    const std::string body = type + data;
    out += body;
    put32(std::uint32_t(crc32(0, reinterpret_cast<const Bytef*>(body.data()), uInt(body.size()))));
    return out;
}

// A header for an 8-bit RGBA image of the given size, followed by `rows` rows of its body.
std::string pngHead(std::uint32_t width, std::uint32_t height, int rows)
{
    std::string ihdr;
    for (std::uint32_t v : { width, height })
        for (int shift = 24; shift >= 0; shift -= 8)
            ihdr += char((v >> shift) & 0xFF);
    ihdr += std::string("\x08\x06\x00\x00\x00", 5);
    const std::string raw(std::size_t(rows) * (1 + std::size_t { width } * 4), '\0');
    uLongf size = compressBound(uLong(raw.size()));
    std::string packed(size, '\0');
    compress(
        reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(raw.data()), uLong(raw.size()));
    packed.resize(size);
    return std::string("\x89PNG\r\n\x1a\n", 8) + chunk("IHDR", ihdr) + chunk("IDAT", packed);
}

TEST(ImagePng, HostileHeadersAreRefusedWithTheirReasonAndCostWhatTheBodyHolds)
{
    TempDir dir;
    std::string error;
    const auto wide = dir.path() / "wide.png";
    dir.write("wide.png", pngHead(70000, 1, 0));
    EXPECT_FALSE(kit::Image::imageWithContentsOfFile(wide.string(), &error));
    EXPECT_NE(error.find(wide.string()), std::string::npos) << error;
    EXPECT_NE(error.find("70000 x 1 pixels is more than an image may have (sides up to 65536, 268435456 pixels"),
        std::string::npos)
        << error;

    // 16384 x 16384 is within bounds, but the body stops after two rows: 1 GB would be the image.
    const auto cut = dir.write("cut.png", pngHead(16384, 16384, 2));
    EXPECT_FALSE(kit::Image::imageWithContentsOfFile(cut.string(), &error));
    EXPECT_NE(error.find("the file ends before its image does"), std::string::npos) << error;
    const auto base = peakOfChild([] { return true; });
    const auto peak = peakOfChild([&] { return !kit::Image::imageWithContentsOfFile(cut.string()); });
    ASSERT_TRUE(base && peak);
    // A quarter of the image leaves room for a sanitizer's shadow of the reserved rows.
    EXPECT_LT(*peak - *base, 16384LL * 16384 * 4 / 4) << "bytes held for a cut-off body";
}

TEST(ImagePng, AScreenshotHoldsItsImageOnceWhileTakenAndWritten)
{
    TempDir dir;
    const std::string path = (dir.path() / "window.png").string();
    constexpr long kSide = 4096;
    const auto base = peakOfChild([] { return true; });
    const auto peak = peakOfChild([&] {
        auto window = kit::Window::create({ 0, 0, float(kSide), float(kSide) });
        return window->renderImage()->writePNG(path);
    });
    ASSERT_TRUE(base && peak);
    const long long image = kSide * kSide * 4;
    EXPECT_LT(*peak - *base, 2 * image) << "bytes";
    auto back = kit::Image::imageWithContentsOfFile(path);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->pixelsWide(), kSide);
}

TEST(ImagePng, InterlacedImagesReadLikePlainOnes)
{
    TempDir dir;
    const std::string path = (dir.path() / "adam7.png").string();
    constexpr int kSide = 13;
    std::vector<std::uint8_t> rgba(kSide * kSide * 4);
    for (std::size_t i = 0; i < rgba.size(); ++i)
        rgba[i] = (i % 4 == 3) ? 255 : std::uint8_t(i * 7);
    FILE* file = std::fopen(path.c_str(), "wb");
    ASSERT_TRUE(file);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_set_IHDR(png, info, kSide, kSide, 8, PNG_COLOR_TYPE_RGB_ALPHA, PNG_INTERLACE_ADAM7,
        PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    std::vector<png_bytep> rows(kSide);
    for (int y = 0; y < kSide; ++y)
        rows[y] = rgba.data() + y * kSide * 4;
    png_set_rows(png, info, rows.data());
    png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    png_destroy_write_struct(&png, &info);
    std::fclose(file);

    auto back = kit::Image::imageWithContentsOfFile(path);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->rgba(), rgba);
}

} // namespace
