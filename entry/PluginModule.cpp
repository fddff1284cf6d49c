// PluginModule: the exported entry points and the fourteen shims behind the table.
#include "module/PluginModule.h"

#include "entry/QuillmarkPluginSelection.h"
#include "entry/ResourceHelpers.h"
#include "kit/AutoreleasePool.h"

#include <filesystem>

namespace {

constexpr const char* kName = "Selection";
constexpr const char* kVersion = "1.0";
constexpr int kRecommendedLocation = 1;

QuillmarkPluginSelection* controller(void* handle) { return static_cast<QuillmarkPluginSelection*>(handle); }

void* createPluginSelection(void* context, void* window)
{
    auto created = QuillmarkPluginSelection::create();
    created->setQMContext(context);
    created->setParentWindow(window);
    return created.leakRef(); // the host owns this reference until destroy
}

int destoryPluginSelection(void* handle)
{
    if (!handle)
        return -1;
    controller(handle)->release();
    return 0;
}

int runPluginSelection(void* handle)
{
    if (!handle)
        return -1;
    controller(handle)->run();
    return 0;
}

int stopPluginSelection(void* handle)
{
    if (!handle)
        return -1;
    controller(handle)->stop();
    return 0;
}

int undoPluginSelection(void* handle, void* argument)
{
    if (!handle)
        return -1;
    controller(handle)->undo(argument);
    return 0;
}

int redoPluginSelection(void* handle, void* argument)
{
    if (!handle)
        return -1;
    controller(handle)->redo(argument);
    return 0;
}

int playPluginSelection(void* handle, SelectionEventRecord* record)
{
    if (!handle)
        return -1;
    controller(handle)->play(record);
    return 0;
}

int isActivePluginSelection(void* handle)
{
    if (!handle)
        return 1;
    return controller(handle)->isActive() ? 1 : 0;
}

const char* getNameSelection() { return kName; }
const char* getVersionSelection() { return kVersion; }
const char* getToolTipSelection() { return kName; }
int getRecommendedLocationSelection() { return kRecommendedLocation; }

/// The full path of an icon in the plug-in bundle's resource folder, valid until the
/// autorelease pool drains; null without the bundle.
const char* iconPath(const char* fileName)
{
    auto bundle = myLibraryResourcesBundle();
    if (!bundle)
        return nullptr;
    const std::string path = (std::filesystem::path(bundle->resourcePath()) / fileName).string();
    return kit::AutoreleasePool::current().autoreleaseString(path);
}

const char* getNormalIconPathSelection() { return iconPath("normalIcon.png"); }
const char* getSelectedIconPathSelection() { return iconPath("selectedIcon.png"); }

} // namespace

extern "C" PluginModule* GetPlugin()
{
    return new PluginModule {
        createPluginSelection,
        destoryPluginSelection,
        runPluginSelection,
        stopPluginSelection,
        undoPluginSelection,
        redoPluginSelection,
        playPluginSelection,
        isActivePluginSelection,
        getNameSelection,
        getVersionSelection,
        getNormalIconPathSelection,
        getSelectedIconPathSelection,
        getToolTipSelection,
        getRecommendedLocationSelection,
    };
}

extern "C" void DeletePlugin(PluginModule* module) { delete module; }
