// Reference counting: ownership handed over, shared and given back.
#include "kit/Object.h"

#include <gtest/gtest.h>

namespace {

class Probe final : public kit::Object {
public:
    explicit Probe(int* deaths) : m_deaths(deaths) {}

private:
    ~Probe() override { ++*m_deaths; }
    int* m_deaths;
};

TEST(RefPtr, AdoptedObjectDiesWithItsLastOwner)
{
    int deaths = 0;
    {
        kit::RefPtr<Probe> first = kit::adoptRef(new Probe(&deaths));
        EXPECT_EQ(first->refCount(), 1);
        kit::RefPtr<Probe> second = first;
        EXPECT_EQ(first->refCount(), 2);
        first.clear();
        EXPECT_EQ(deaths, 0);
        EXPECT_EQ(second->refCount(), 1);
    }
    EXPECT_EQ(deaths, 1);
}

TEST(RefPtr, MoveAndAssignmentKeepCountsRight)
{
    int deaths = 0;
    kit::RefPtr<Probe> a = kit::adoptRef(new Probe(&deaths));
    kit::RefPtr<Probe> b = std::move(a);
    EXPECT_FALSE(a);
    EXPECT_EQ(b->refCount(), 1);
    kit::RefPtr<Probe> c = kit::adoptRef(new Probe(&deaths));
    c = b; // the object c held goes away
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(b->refCount(), 2);
    c = c; // self-assignment keeps it
    EXPECT_EQ(b->refCount(), 2);
    Probe* raw = b.leakRef();
    EXPECT_EQ(raw->refCount(), 2);
    raw->release();
    c.clear();
    EXPECT_EQ(deaths, 2);
}

TEST(RefPtr, BaseClassPointerShares)
{
    int deaths = 0;
    kit::RefPtr<kit::Object> base;
    {
        kit::RefPtr<Probe> derived = kit::adoptRef(new Probe(&deaths));
        base = derived;
    }
    EXPECT_EQ(deaths, 0);
    base.clear();
    EXPECT_EQ(deaths, 1);
}

} // namespace
