// ResourceHelpers: the plug-in bundle is looked up by name in the host, not by the calling code.
#include "entry/ResourceHelpers.h"

#include "kit/AutoreleasePool.h"

#include <filesystem>

kit::RefPtr<kit::Bundle> myLibraryResourcesBundle()
{
    auto path = kit::Bundle::mainBundle().pathForResource("QuillmarkPlugin_Selection", "bundle", "../PlugIns");
    return path ? kit::Bundle::bundleWithPath(*path) : nullptr;
}

kit::Image* myLibraryImageNamed(const std::string& name)
{
    auto bundle = myLibraryResourcesBundle();
    if (!bundle || name.empty())
        return nullptr;
    const std::string path = (std::filesystem::path(bundle->resourcePath()) / name).string();
    return kit::AutoreleasePool::current().autorelease(kit::Image::imageWithContentsOfFile(path));
}

std::string myLibraryLocalizedString(const std::string& key)
{
    auto bundle = myLibraryResourcesBundle();
    return bundle ? bundle->localizedString(key, key, "InfoPlist") : key;
}
