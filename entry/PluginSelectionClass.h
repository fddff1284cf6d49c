// PluginSelectionClass: the module table for a host that loads the plug-in's class.
#pragma once

#include "kit/Object.h"
#include "module/PluginModule.h"

class PluginSelectionClass final : public kit::Object {
public:
    static kit::RefPtr<PluginSelectionClass> create() { return kit::adoptRef(new PluginSelectionClass); }
    /// The same as GetPlugin.
    PluginModule* getPluginModule() const;
    /// The same as DeletePlugin.
    void deletePluginModule(PluginModule* module) const;

private:
    PluginSelectionClass() = default;
};
