// EveryTargetMain: runs a test program once for each SIMD target the machine can run and the
// kit was compiled for (the portable one included), so no kernel is checked on the best target
// alone. Each target runs in a child process of its own, pinned before any kernel was chosen.
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr const char* kTargetVariable = "QM_SIMD_TARGET";

int runPinnedTo(const char* targetBits, int argc, char** argv)
{
    hwy::SetSupportedTargetsForTest(std::strtoll(targetBits, nullptr, 10));
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

/// Runs this program again with the variable set to `target`; true when it passed.
bool passesOn(std::int64_t target, char** argv)
{
    std::printf("[ TARGET   ] %s\n", hwy::TargetName(target));
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        setenv(kTargetVariable, std::to_string(target).c_str(), 1);
        execv("/proc/self/exe", argv);
        _exit(127);
    }
    int status = 0;
    const bool passed
        = child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    std::printf("[ TARGET   ] %s %s\n", hwy::TargetName(target), passed ? "passed" : "FAILED");
    return passed;
}

} // namespace

int main(int argc, char** argv)
{
    if (const char* target = std::getenv(kTargetVariable))
        return runPinnedTo(target, argc, argv);
    int failed = 0;
    for (std::int64_t target : hwy::SupportedAndGeneratedTargets())
        failed += passesOn(target, argv) ? 0 : 1;
    return failed == 0 ? 0 : 1;
}
