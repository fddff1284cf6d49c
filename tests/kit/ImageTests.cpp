// Images: PNG files written and read back, and files that are not images.
#include "kit/Image.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <png.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <random>
#include <vector>

namespace {

TEST(ImagePng, OpaqueAndClearPixelsSurviveARoundTripExactly)
{
    TempDir dir;
    const std::vector<std::uint8_t> rgba = { 255, 0, 0, 255, 0, 0, 0, 0, 12, 34, 56, 255,
                                             0, 0, 0, 255, 255, 255, 255, 255, 0, 0, 0, 0 };
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

} // namespace
