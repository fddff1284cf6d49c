// Fuzz target: any bytes as a session script; parsing must refuse or accept, never misbehave.
#include "hostapp/SessionScript.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string error;
    auto script
        = hostapp::SessionScript::parse(std::string_view(reinterpret_cast<const char*>(data), size), "fuzz", error);
    if (!script && error.rfind("fuzz:", 0) != 0)
        __builtin_trap(); // every refusal names the source and line
    return 0;
}
