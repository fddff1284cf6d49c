// Bundles: the main-bundle rule, resource paths and localised strings.
#include "kit/Bundle.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

TEST(MainBundle, IsTheFolderTwoLevelsAboveTheExecutablesFolder)
{
    const fs::path exe = fs::read_symlink("/proc/self/exe");
    EXPECT_EQ(kit::Bundle::mainBundle().bundlePath(), exe.parent_path().parent_path().parent_path().string());
}

class BundleLookup : public testing::Test {
protected:
    void SetUp() override
    {
        dir.write("Host.app/Contents/Resources/text_editbox.png", "png");
        dir.write("Host.app/Contents/PlugIns/Tools.bundle/Contents/Resources/normalIcon.png", "png");
        dir.write("Host.app/Contents/Resources/Localizable.strings", "\"Pixels\" = \"Pixel\";\n");
        dir.write("Host.app/Contents/Resources/Broken.strings", "\"a\" = \"b\"\n");
        bundle = kit::Bundle::bundleWithPath((dir.path() / "Host.app").string());
        ASSERT_TRUE(bundle);
    }
    TempDir dir;
    kit::RefPtr<kit::Bundle> bundle;
};

TEST_F(BundleLookup, ResourcePathsAreNormalisedAndMustExist)
{
    const fs::path app = dir.path() / "Host.app";
    EXPECT_EQ(bundle->resourcePath(), (app / "Contents/Resources").string());
    EXPECT_EQ(bundle->pathForResource("text_editbox", "png"), (app / "Contents/Resources/text_editbox.png").string());
    // The plug-in's own lookup: a folder bundle one level up, beside the resource folder.
    EXPECT_EQ(
        bundle->pathForResource("Tools", "bundle", "../PlugIns"), (app / "Contents/PlugIns/Tools.bundle").string());
    EXPECT_EQ(bundle->pathForResource("Missing", "bundle", "../PlugIns"), std::nullopt);
    EXPECT_EQ(bundle->pathForResource("text_editbox", "jpg"), std::nullopt);
    EXPECT_EQ(bundle->pathForResource("", "png"), std::nullopt);
}

TEST_F(BundleLookup, LocalisedStringsFallBackToTheValueAndThenTheKey)
{
    EXPECT_EQ(bundle->localizedString("Pixels"), "Pixel");
    EXPECT_EQ(bundle->localizedString("Inches"), "Inches");
    EXPECT_EQ(bundle->localizedString("Inches", "in"), "in");
    EXPECT_EQ(bundle->localizedString("Pixels", {}, "NoSuchTable"), "Pixels");
    // A table that does not parse is no table: keys come back as they are.
    EXPECT_EQ(bundle->localizedString("a", {}, "Broken"), "a");
}

TEST(BundleWithPath, RefusesWhatIsNotAFolder)
{
    TempDir dir;
    const auto file = dir.write("plain.txt", "x");
    EXPECT_FALSE(kit::Bundle::bundleWithPath(file.string()));
    EXPECT_FALSE(kit::Bundle::bundleWithPath((dir.path() / "absent").string()));
    EXPECT_FALSE(kit::Bundle::bundleWithPath(""));
}

} // namespace
