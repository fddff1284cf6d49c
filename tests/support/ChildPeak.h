// ChildPeak: the most memory a forked child held while running some work, for memory bounds.
#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <optional>

/// The largest resident size, in bytes, of a child process that runs `work`; none when the
/// child could not run or `work` returned false.
inline std::optional<long long> peakOfChild(const std::function<bool()>& work)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(work() ? 0 : 1);
    int status = 0;
    rusage usage {};
    if (child < 0 || wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return std::nullopt;
    return static_cast<long long>(usage.ru_maxrss) * 1024;
}
