// The module table as a host sees it: loaded with dlopen by a program that never used the kit.
#include "engine/Document.h"
#include "module/PluginModule.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

fs::path pluginLibrary()
{
    const char* build = std::getenv("QM_BUILD_DIR");
    return fs::path(build ? build : ".")
        / "Quillmark.app/Contents/PlugIns/QuillmarkPlugin_Selection.bundle/Contents/lib/"
          "libQuillmarkPlugin_Selection.so";
}

bool kitLoaded()
{
    std::ifstream maps("/proc/self/maps");
    std::stringstream text;
    text << maps.rdbuf();
    return text.str().find("libkit.so") != std::string::npos;
}

struct Entry {
    PluginModule* (*get)() = nullptr;
    void (*remove)(PluginModule*) = nullptr;
};

Entry openPlugin(const fs::path& library)
{
    void* handle = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle)
        return {};
    return { reinterpret_cast<PluginModule* (*)()>(dlsym(handle, "GetPlugin")),
        reinterpret_cast<void (*)(PluginModule*)>(dlsym(handle, "DeletePlugin")) };
}

class ModuleTable : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        kitWasLoadedBefore = kitLoaded();
        entry = openPlugin(pluginLibrary());
    }
    void SetUp() override
    {
        ASSERT_TRUE(entry.get && entry.remove) << "cannot load " << pluginLibrary() << ": " << dlerror();
        table = entry.get();
        document.setJournalEnabled(true);
    }
    void TearDown() override { entry.remove(table); }

    static inline bool kitWasLoadedBefore = false;
    static inline Entry entry;
    PluginModule* table = nullptr;
    engine::Document document;
};

TEST_F(ModuleTable, TheHostHadNotTouchedTheKitBeforeLoading)
{
    EXPECT_FALSE(kitWasLoadedBefore);
    EXPECT_TRUE(kitLoaded()); // the plug-in brought it in
}

TEST_F(ModuleTable, TablesAreDistinctWithEqualSlotsAndFreedIndependently)
{
    PluginModule* second = entry.get();
    ASSERT_NE(second, table);
    EXPECT_EQ(std::memcmp(second, table, sizeof(PluginModule)), 0);
    entry.remove(second);
    EXPECT_STREQ(table->getName(), "Selection"); // the first still works
    entry.remove(nullptr);
}

TEST_F(ModuleTable, ConstantsAreTheReportedOnes)
{
    EXPECT_STREQ(table->getName(), "Selection");
    EXPECT_STREQ(table->getToolTip(), "Selection");
    EXPECT_STREQ(table->getVersion(), "1.0");
    EXPECT_EQ(table->getRecommendedLocation(), 1);
}

TEST_F(ModuleTable, NullHandlesAreRefused)
{
    SelectionEventRecord record;
    EXPECT_EQ(table->destroy(nullptr), -1);
    EXPECT_EQ(table->run(nullptr), -1);
    EXPECT_EQ(table->stop(nullptr), -1);
    EXPECT_EQ(table->undo(nullptr, nullptr), -1);
    EXPECT_EQ(table->redo(nullptr, nullptr), -1);
    EXPECT_EQ(table->play(nullptr, &record), -1);
    EXPECT_EQ(table->isActive(nullptr), 1);
}

TEST_F(ModuleTable, ActiveIsZeroOneZeroAcrossCreateRunStop)
{
    void* handle = table->create(document.context(), nullptr);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(table->isActive(handle), 0);
    EXPECT_EQ(table->run(handle), 0);
    EXPECT_EQ(table->isActive(handle), 1);
    EXPECT_EQ(table->stop(handle), 0);
    EXPECT_EQ(table->isActive(handle), 0);
    EXPECT_EQ(table->destroy(handle), 0);
}

TEST_F(ModuleTable, UndoRedoAndPlayBeforeTheFirstRunReachNothing)
{
    void* handle = table->create(document.context(), nullptr);
    SelectionEventRecord record;
    EXPECT_EQ(table->undo(handle, nullptr), 0);
    EXPECT_EQ(table->redo(handle, nullptr), 0);
    EXPECT_EQ(table->play(handle, &record), 0);
    EXPECT_TRUE(document.journal().empty());
    table->destroy(handle);
}

TEST_F(ModuleTable, UndoAndRedoAfterStopReachTheEngineWithTheContextUnchanged)
{
    engine::Document other;
    other.setJournalEnabled(true);
    void* handle = table->create(document.context(), nullptr);
    table->run(handle);
    table->stop(handle);
    int marker = 0;
    EXPECT_EQ(table->undo(handle, &marker), 0);
    EXPECT_EQ(table->redo(handle, &marker), 0);
    EXPECT_EQ(document.journal(), (std::vector<std::string> { "IPD_UndoStroke", "IPD_RedoStroke" }));
    EXPECT_TRUE(other.journal().empty());
    table->destroy(handle);
}

/// Runs a copy of this program inside `app`/Contents/bin and returns the two icon paths it
/// prints, so that the plug-in sees that folder as the host's application bundle.
std::string iconPathsSeenFrom(const fs::path& app)
{
    fs::create_directories(app / "Contents/bin");
    const fs::path probe = app / "Contents/bin/probe";
    fs::copy_file("/proc/self/exe", probe, fs::copy_options::overwrite_existing);
    const std::string command = "'" + probe.string() + "' --print-icons '" + pluginLibrary().string() + "'";
    std::string output;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char buffer[4096];
        while (std::fgets(buffer, sizeof buffer, pipe))
            output += buffer;
        pclose(pipe);
    }
    return output;
}

TEST(IconPaths, LieInTheBundleResourceFolderWhenTheBundleIsInThePlugInsFolder)
{
    TempDir dir;
    const fs::path app = dir.path() / "Host.app";
    fs::create_directories(app / "Contents/PlugIns/QuillmarkPlugin_Selection.bundle/Contents/Resources");
    const fs::path resources = app / "Contents/PlugIns/QuillmarkPlugin_Selection.bundle/Contents/Resources";
    EXPECT_EQ(iconPathsSeenFrom(app),
        (resources / "normalIcon.png").string() + "\n" + (resources / "selectedIcon.png").string() + "\n");
}

TEST(IconPaths, AreNullWhenTheBundleIsMissingOrMisnamed)
{
    TempDir dir;
    const fs::path app = dir.path() / "Host.app";
    fs::create_directories(app / "Contents/PlugIns/OtherName.bundle/Contents/Resources");
    EXPECT_EQ(iconPathsSeenFrom(app), "null\nnull\n");
}

int printIcons(const char* library)
{
    Entry e = openPlugin(library);
    if (!e.get)
        return 1;
    PluginModule* table = e.get();
    const char* normal = table->getNormalIconPath();
    const char* selected = table->getSelectedIconPath();
    std::printf("%s\n%s\n", normal ? normal : "null", selected ? selected : "null");
    e.remove(table);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::strcmp(argv[1], "--print-icons") == 0)
        return printIcons(argv[2]);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
