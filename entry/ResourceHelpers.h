// ResourceHelpers: how the plug-in finds its own bundle, images and strings.
#pragma once

#include "kit/Bundle.h"
#include "kit/Image.h"

#include <string>

/// The bundle "QuillmarkPlugin_Selection" of type "bundle" in the host's plug-ins folder
/// ("../PlugIns" from the main bundle's resource folder), or null when it is not there.
kit::RefPtr<kit::Bundle> myLibraryResourcesBundle();
/// The image file `name` (extension included) from that bundle's resource folder, read
/// afresh each call; a temporary that lives until the autorelease pool drains, or null.
kit::Image* myLibraryImageNamed(const std::string& name);
/// The bundle's string for `key` from its "InfoPlist" table, or the key itself.
std::string myLibraryLocalizedString(const std::string& key);
