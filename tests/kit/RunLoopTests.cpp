// Run loop and autorelease pool: order, retention of targets and the manual clock.
#include "kit/AutoreleasePool.h"
#include "kit/RunLoop.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace {

class Target final : public kit::Object {
public:
    static kit::RefPtr<Target> create(bool* dead) { return kit::adoptRef(new Target(dead)); }
    void fire() { ++fired; }
    int fired = 0;

private:
    explicit Target(bool* dead) : m_dead(dead) {}
    ~Target() override { *m_dead = true; }
    bool* m_dead;
};

class RunLoopTest : public testing::Test {
protected:
    void TearDown() override
    {
        // Leave nothing behind for the next test on the shared loop.
        loop.advance(1e6);
        EXPECT_EQ(loop.pendingCount(), 0u);
    }
    kit::RunLoop& loop = kit::RunLoop::main();
};

TEST_F(RunLoopTest, CallsRunInDueOrderThenInTheOrderMade)
{
    std::vector<std::string> order;
    loop.performAfterDelay(
        nullptr, [&] { order.push_back("b@0.5"); }, 0.5);
    loop.performAfterDelay(
        nullptr, [&] { order.push_back("a@0.05"); }, 0.05);
    loop.performAfterDelay(
        nullptr, [&] { order.push_back("c@0.5"); }, 0.5);
    loop.advance(0.49);
    EXPECT_EQ(order, (std::vector<std::string> { "a@0.05" }));
    loop.advance(0.01);
    EXPECT_EQ(order, (std::vector<std::string> { "a@0.05", "b@0.5", "c@0.5" }));
}

TEST_F(RunLoopTest, TheClockReadsTheDueTimeInsideACall)
{
    const double start = loop.now();
    double seen = -1;
    loop.performAfterDelay(
        nullptr, [&] { seen = loop.now() - start; }, 1.0);
    loop.advance(5);
    EXPECT_NEAR(seen, 1.0, 1e-9);
    EXPECT_NEAR(loop.now() - start, 5.0, 1e-9);
}

TEST_F(RunLoopTest, ACallScheduledByACallRunsInTheSameAdvanceWhenDue)
{
    int second = 0;
    loop.performAfterDelay(
        nullptr,
        [&] {
            loop.performAfterDelay(
                nullptr, [&] { ++second; }, 0.05);
        },
        0.5);
    loop.advance(0.54);
    EXPECT_EQ(second, 0);
    loop.advance(0.01);
    EXPECT_EQ(second, 1);
}

TEST_F(RunLoopTest, APendingCallKeepsItsTargetAliveUntilItHasRun)
{
    bool dead = false;
    Target* raw;
    {
        auto target = Target::create(&dead);
        raw = target.get();
        loop.performAfterDelay(raw, &Target::fire, 0.5);
    }
    EXPECT_FALSE(dead);
    EXPECT_EQ(raw->refCount(), 1);
    loop.advance(0.5);
    EXPECT_TRUE(dead);
}

TEST_F(RunLoopTest, CancelledCallsDoNotRunAndReleaseTheirTarget)
{
    bool dead = false;
    auto target = Target::create(&dead);
    loop.performAfterDelay(target.get(), &Target::fire, 0.1);
    loop.cancelPerforms(target.get());
    EXPECT_EQ(target->refCount(), 1);
    loop.advance(1);
    EXPECT_EQ(target->fired, 0);
}

TEST_F(RunLoopTest, NonFiniteDelaysAndBackwardAdvancesAreRefused)
{
    const double start = loop.now();
    loop.performAfterDelay(
        nullptr, [] {}, std::numeric_limits<double>::infinity());
    loop.performAfterDelay(
        nullptr, [] {}, std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(loop.pendingCount(), 0u);
    loop.advance(-3);
    loop.advance(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(loop.now(), start);
}

TEST_F(RunLoopTest, EachPassDrainsTheAutoreleasePool)
{
    bool dead = false;
    auto& pool = kit::AutoreleasePool::current();
    Target* temporary = pool.autorelease(Target::create(&dead));
    const char* text = pool.autoreleaseString("icon path");
    EXPECT_EQ(std::string(text), "icon path");
    EXPECT_EQ(temporary->refCount(), 1);
    EXPECT_FALSE(dead);
    loop.advance(0);
    EXPECT_TRUE(dead);
    EXPECT_EQ(pool.count(), 0u);
}

TEST_F(RunLoopTest, TheWallClockMovesOnByItself)
{
    loop.setClock(kit::RunLoop::Clock::Wall);
    const double a = loop.now();
    bool ran = false;
    loop.performAfterDelay(
        nullptr, [&] { ran = true; }, 0);
    loop.runDue();
    EXPECT_TRUE(ran);
    EXPECT_GE(loop.now(), a);
    loop.setClock(kit::RunLoop::Clock::Manual);
    EXPECT_GE(loop.now(), a);
}

} // namespace
