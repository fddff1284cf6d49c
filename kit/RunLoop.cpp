// RunLoop: the main loop's timers.
#include "kit/RunLoop.h"

#include "kit/AutoreleasePool.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace kit {

namespace {

double monotonicSeconds()
{
    using namespace std::chrono;
    return duration<double>(steady_clock::now().time_since_epoch()).count();
}

} // namespace

RunLoop& RunLoop::main()
{
    static RunLoop* loop = new RunLoop;
    return *loop;
}

void RunLoop::setClock(Clock clock)
{
    if (clock == m_clock)
        return;
    const double current = now();
    m_clock = clock;
    m_manualNow = current;
    m_wallBase = current;
    m_wallStart = monotonicSeconds();
}

double RunLoop::now() const
{
    if (m_clock == Clock::Manual)
        return m_manualNow;
    return m_wallBase + (monotonicSeconds() - m_wallStart);
}

void RunLoop::performAfterDelay(Object* target, std::function<void()> action, double seconds)
{
    if (!action || !std::isfinite(seconds))
        return;
    m_pending.push_back({ now() + std::max(0.0, seconds), m_sequence++, RefPtr<Object>(target), std::move(action) });
}

void RunLoop::cancelPerforms(const Object* target)
{
    std::vector<Pending> dropped;
    auto it = std::stable_partition(
        m_pending.begin(), m_pending.end(), [target](const Pending& p) { return p.target.get() != target; });
    std::move(it, m_pending.end(), std::back_inserter(dropped));
    m_pending.erase(it, m_pending.end());
    // `dropped` releases the targets here, after the list is consistent again.
}

std::optional<double> RunLoop::nextDueTime() const
{
    if (m_pending.empty())
        return std::nullopt;
    auto earliest = std::min_element(m_pending.begin(), m_pending.end(), [](const Pending& a, const Pending& b) {
        return a.due < b.due || (a.due == b.due && a.sequence < b.sequence);
    });
    return earliest->due;
}

bool RunLoop::runOneDue(double limit)
{
    auto earliest = std::min_element(m_pending.begin(), m_pending.end(), [](const Pending& a, const Pending& b) {
        return a.due < b.due || (a.due == b.due && a.sequence < b.sequence);
    });
    if (earliest == m_pending.end() || earliest->due > limit)
        return false;
    Pending call = std::move(*earliest);
    m_pending.erase(earliest);
    if (m_clock == Clock::Manual)
        m_manualNow = std::max(m_manualNow, call.due);
    call.action();
    return true; // `call` releases its target only now, after the action ran.
}

void RunLoop::advance(double seconds)
{
    if (!std::isfinite(seconds) || seconds < 0)
        return;
    const double limit = now() + seconds;
    while (runOneDue(limit)) {}
    if (m_clock == Clock::Manual)
        m_manualNow = limit;
    AutoreleasePool::current().drain();
}

std::size_t RunLoop::runDue()
{
    std::size_t ran = 0;
    while (runOneDue(now()))
        ++ran;
    AutoreleasePool::current().drain();
    return ran;
}

} // namespace kit
