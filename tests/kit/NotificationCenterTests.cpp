// Notification centre: matching by name and sender, and changes made while posting.
#include "kit/NotificationCenter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class NotificationCenterTest : public testing::Test {
protected:
    void TearDown() override
    {
        for (const int* o : { &a, &b, &c })
            center.removeObserver(o);
        EXPECT_EQ(center.observerCount(), before);
    }
    kit::NotificationCenter& center = kit::NotificationCenter::defaultCenter();
    std::size_t before = center.observerCount();
    int a = 0, b = 0, c = 0;
    std::vector<std::string> log;
};

TEST_F(NotificationCenterTest, DeliversByNameAndSenderInRegistrationOrder)
{
    const int senderX = 0, senderY = 0;
    center.addObserver(&a, "TrackingAreaCursorUpdated", nullptr, [&](auto&) { log.push_back("a"); });
    center.addObserver(&b, "TrackingAreaCursorUpdated", &senderX, [&](auto&) { log.push_back("b"); });
    center.addObserver(&c, "keyUp", nullptr, [&](auto&) { log.push_back("c"); });

    center.post("TrackingAreaCursorUpdated", &senderY);
    EXPECT_EQ(log, (std::vector<std::string> { "a" }));
    log.clear();
    center.post("TrackingAreaCursorUpdated", &senderX);
    EXPECT_EQ(log, (std::vector<std::string> { "a", "b" }));
    log.clear();
    center.post("unrelated");
    EXPECT_TRUE(log.empty());
}

TEST_F(NotificationCenterTest, RemovalDuringAPostStopsLaterDeliveries)
{
    center.addObserver(&a, "n", nullptr, [&](auto&) {
        log.push_back("a");
        center.removeObserver(&b);
    });
    center.addObserver(&b, "n", nullptr, [&](auto&) { log.push_back("b"); });
    center.post("n");
    center.post("n");
    EXPECT_EQ(log, (std::vector<std::string> { "a", "a" }));
}

TEST_F(NotificationCenterTest, RemovingByNameLeavesTheObserversOtherRegistrations)
{
    center.addObserver(&a, "first", nullptr, [&](auto&) { log.push_back("first"); });
    center.addObserver(&a, "second", nullptr, [&](auto&) { log.push_back("second"); });
    center.removeObserver(&a, "first");
    center.post("first");
    center.post("second");
    EXPECT_EQ(log, (std::vector<std::string> { "second" }));
}

TEST_F(NotificationCenterTest, AnObserverAddedDuringAPostWaitsForTheNextOne)
{
    center.addObserver(&a, "n", nullptr, [&](auto&) {
        log.push_back("a");
        if (log.size() == 1)
            center.addObserver(&b, "n", nullptr, [&](auto&) { log.push_back("b"); });
    });
    center.post("n");
    center.post("n");
    EXPECT_EQ(log, (std::vector<std::string> { "a", "a", "b" }));
}

} // namespace
