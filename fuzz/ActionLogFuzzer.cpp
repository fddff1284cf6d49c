// Fuzz target: any bytes as an action log, then every record it yields replayed on a document.
#include "engine/ActionLog.h"
#include "engine/Document.h"
#include "kit/RunLoop.h"
#include "module/PluginModule.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    engine::ActionLog log;
    std::string error;
    if (!log.parseJsonLines(std::string_view(reinterpret_cast<const char*>(data), size), "fuzz", error))
        return 0;
    // What loads must replay without harm, however odd its numbers and texts.
    static PluginModule* table = GetPlugin();
    engine::Document document;
    document.setCanvasSize(256, 256);
    void* handle = table->create(document.context(), nullptr);
    table->run(handle);
    for (const SelectionEventRecord& saved : log.records()) {
        SelectionEventRecord record = saved;
        table->play(handle, &record);
    }
    table->destroy(handle);
    kit::RunLoop::main().advance(10);
    return 0;
}
