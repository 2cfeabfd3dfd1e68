#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "fakes/both_kinds.h"
#include "fakes/fake_event_loop.h"
#include "platform/clock.h"
#include "platform/event_loop.h"
#include "platform/files.h"
#include "platform/services.h"

namespace quirepress {
namespace {

using testing::ElementsAre;

class EventLoopContract : public testing::TestWithParam<bool> {
protected:
    EventLoop& loop() { return GetParam() ? static_cast<EventLoop&>(m_fake) : *m_services.loop; }

    // Time goes by and nobody pumps.
    void BeBusy(int milliseconds) {
        if (GetParam()) {
            m_fake.Advance(milliseconds);
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        }
    }

private:
    Services m_services = MakeSystemServices();
    FakeEventLoop m_fake;
};

INSTANTIATE_TEST_SUITE_P(Implementations, EventLoopContract, testing::Bool(), NameOfKind);

TEST_P(EventLoopContract, WaitsAtLeastAsLongAsAsked) {
    for (const int milliseconds : {0, 1, 30}) {
        const long long start = loop().MonotonicMilliseconds();
        loop().Wait(milliseconds);
        const long long gone = loop().MonotonicMilliseconds() - start;
        EXPECT_GE(gone, milliseconds);
        EXPECT_LT(gone, milliseconds + 1'000);
    }
}

TEST_P(EventLoopContract, RunsTimersAgainAndAgainWhilePumped) {
    int ticks = 0;
    loop().StartTimer(7, 40, [&] { ++ticks; });
    loop().Pump();
    EXPECT_EQ(ticks, 0);
    loop().Wait(220);
    EXPECT_GE(ticks, 2);
    EXPECT_LE(ticks, 5);
    loop().StopTimer(7);
    loop().StopTimer(8);
    const int before = ticks;
    loop().Wait(100);
    EXPECT_EQ(ticks, before);
}

TEST_P(EventLoopContract, ReplacesATimerOfTheSameId) {
    int old = 0;
    int fresh = 0;
    loop().StartTimer(1, 10, [&] { ++old; });
    loop().StartTimer(1, 10, [&] { ++fresh; });
    loop().StartTimer(2, -5, [] {});
    loop().Wait(60);
    EXPECT_EQ(old, 0);
    EXPECT_GE(fresh, 1);
}

TEST_P(EventLoopContract, RunsDueTimersInTheOrderOfTheirTimesAndMissedTicksOnce) {
    std::vector<int> order;
    loop().StartTimer(3, 30, [&] { order.push_back(3); });
    loop().StartTimer(1, 50, [&] { order.push_back(1); });
    loop().StartTimer(2, 10, [&] { order.push_back(2); });
    BeBusy(300);
    loop().Pump();
    EXPECT_THAT(order, ElementsAre(2, 3, 1));
    loop().Pump();
    EXPECT_EQ(order.size(), 3U);
}

TEST_P(EventLoopContract, DoesNotRunATimerInsideItself) {
    int depth = 0;
    int deepest = 0;
    int runs = 0;
    int others = 0;
    loop().StartTimer(1, 20, [&] {
        deepest = std::max(deepest, ++depth);
        if (++runs == 1) {
            // Not even one of the same id that the handler starts anew.
            loop().StartTimer(1, 20, [&] {
                deepest = std::max(deepest, ++depth);
                --depth;
            });
        }
        loop().Wait(100);
        --depth;
    });
    loop().StartTimer(2, 20, [&] { others += depth; });
    loop().Wait(200);
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(deepest, 1);
    EXPECT_GE(others, 1);
}

TEST_P(EventLoopContract, LetsHandlersStopThemselvesAndOthers) {
    int first = 0;
    int second = 0;
    loop().StartTimer(1, 10, [&] {
        ++first;
        loop().StopTimer(2);
        loop().StopTimer(1);
        loop().StartTimer(3, 1, [&, text = std::string(100, 'x')] {
            loop().StopTimer(3);
            second += static_cast<int>(text.size());
        });
    });
    loop().StartTimer(2, 20, [&] { ++second; });
    BeBusy(100);
    loop().Pump();
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 0);
    loop().Wait(50);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 100);
}

TEST_P(EventLoopContract, RunsTasksOnceAPass) {
    int runs = 0;
    int later = 0;
    int handle = 0;
    handle = loop().AddPumpTask([&] {
        if (++runs == 2) loop().RemovePumpTask(handle);
        return false;
    });
    EXPECT_NE(handle, 0);
    const int second = loop().AddPumpTask([&] { return ++later < 0; });
    EXPECT_NE(second, handle);
    loop().Pump();
    EXPECT_EQ(runs, 1);
    loop().Pump();
    loop().Pump();
    EXPECT_EQ(runs, 2);
    EXPECT_EQ(later, 3);
    loop().RemovePumpTask(second);
    loop().RemovePumpTask(second);
    loop().Wait(30);
    EXPECT_EQ(later, 3);
}

TEST_P(EventLoopContract, GivesBusyTasksThePassesAndIdleOnesTheirPeace) {
    int passes = 0;
    int ticks = 0;
    bool busy = true;
    loop().AddPumpTask([&] {
        ++passes;
        return busy;
    });
    loop().StartTimer(1, 20, [&] { ++ticks; });
    loop().Wait(200);
    EXPECT_GE(passes, 100);
    EXPECT_GE(ticks, 3);
    busy = false;
    passes = 0;
    loop().Wait(300);
    EXPECT_GE(passes, 3);
    EXPECT_LE(passes, 100);
}

TEST_P(EventLoopContract, DoesNotRunATaskInsideItself) {
    int depth = 0;
    int deepest = 0;
    const int handle = loop().AddPumpTask([&] {
        deepest = std::max(deepest, ++depth);
        loop().Wait(20);
        --depth;
        return false;
    });
    loop().Wait(50);
    loop().RemovePumpTask(handle);
    EXPECT_EQ(deepest, 1);
}

}  // namespace
}  // namespace quirepress
