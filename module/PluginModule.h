// PluginModule: the fourteen-slot table through which a host drives the plug-in.
#pragma once

struct SelectionEventRecord;

/// The module table, indexed by position: the field order is the slot order.
struct PluginModule {
    void* (*create)(void* context, void* window);
    int (*destroy)(void* handle);
    int (*run)(void* handle);
    int (*stop)(void* handle);
    int (*undo)(void* handle, void* argument);
    int (*redo)(void* handle, void* argument);
    int (*play)(void* handle, SelectionEventRecord* record);
    int (*isActive)(void* handle);
    const char* (*getName)();
    const char* (*getVersion)();
    const char* (*getNormalIconPath)();
    const char* (*getSelectedIconPath)();
    const char* (*getToolTip)();
    int (*getRecommendedLocation)();
};

static_assert(sizeof(PluginModule) == 14 * sizeof(void*), "the table holds exactly fourteen pointers");

#define QUILLMARK_EXPORT __attribute__((visibility("default")))

extern "C" {
/// A new table; each call makes another. Free it with DeletePlugin.
QUILLMARK_EXPORT PluginModule* GetPlugin();
/// Frees a table made by GetPlugin; null is ignored.
QUILLMARK_EXPORT void DeletePlugin(PluginModule* module);
}
