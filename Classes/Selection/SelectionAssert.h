// SelectionAssert: invariant checks that stop the program in every build, naming where they broke.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace selection {

/// The source unit of a file path: from "Classes/" on, without the extension.
constexpr std::string_view sourceUnit(std::string_view file)
{
    const auto classes = file.rfind("Classes/");
    if (classes != std::string_view::npos)
        file.remove_prefix(classes);
    const auto dot = file.rfind('.');
    if (dot != std::string_view::npos && file.find('/', dot) == std::string_view::npos)
        file.remove_suffix(file.size() - dot);
    return file;
}

/// Prints "assertion failed: (condition), function F, file UNIT, line N." and aborts.
[[noreturn]] inline void assertionFailed(const char* condition, const char* function, const char* file, int line)
{
    const std::string_view unit = sourceUnit(file);
    std::fprintf(stderr, "assertion failed: (%s), function %s, file %.*s, line %d.\n", condition, function,
        int(unit.size()), unit.data(), line);
    std::fflush(stderr);
    std::abort();
}

} // namespace selection

/// Stops the program when the condition is false, release builds included: a broken invariant
/// of the plug-in, never a check of outside input.
#define SELECTION_ASSERT(condition)                                                                                    \
    ((condition) ? (void)0 : ::selection::assertionFailed(#condition, __func__, __FILE__, __LINE__))
