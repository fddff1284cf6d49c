// PluginSelectionClass: forwards to the exported entry points.
#include "entry/PluginSelectionClass.h"

PluginModule* PluginSelectionClass::getPluginModule() const { return GetPlugin(); }

void PluginSelectionClass::deletePluginModule(PluginModule* module) const { DeletePlugin(module); }
