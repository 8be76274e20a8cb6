#include "VELSysConsumer.h"

#include "FailingAllocation.h"
#include "TestSupport.h"
#include "VELSysProducer.h"
#include "VELSysThread.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Notes the messages that it receives.
class Recorder {
public:
    static int Receive(int code, int cancel, void*, void* recorder) {
        auto* const self = static_cast<Recorder*>(recorder);
        const std::lock_guard lock(self->_mutex);
        (cancel ? self->_cancelled : self->_delivered).push_back(code);
        self->_thread = std::this_thread::get_id();
        return 0;
    }

    std::vector<int> GetDelivered() const {
        const std::lock_guard lock(_mutex);
        return _delivered;
    }
    std::vector<int> GetCancelled() const {
        const std::lock_guard lock(_mutex);
        return _cancelled;
    }
    std::thread::id GetThread() const {
        const std::lock_guard lock(_mutex);
        return _thread;
    }
    bool HasDelivered(unsigned long count) const {
        return WaitUntil([this, count] { return GetDelivered().size() >= count; });
    }

private:
    mutable std::mutex _mutex;
    std::vector<int> _delivered;
    std::vector<int> _cancelled;
    std::thread::id _thread;
};

void SendCode(VELSysConsumer& consumer, int code, Recorder& recorder) {
    VELSysProducer producer(&consumer, code, Recorder::Receive, &recorder);
    EXPECT_EQ(producer.Send(nullptr), 0);
}

/// A message that is being delivered until it is let go.
class SlowMessage {
public:
    explicit SlowMessage(VELSysConsumer& consumer) {
        VELSysProducer(&consumer, 1, Receive, this);
        EXPECT_TRUE(WaitUntil([this] { return isBeingDelivered.load(); }));
    }

    std::atomic<bool> isBeingDelivered{false};
    std::atomic<bool> mayEnd{false};
    std::atomic<bool> hasEnded{false};

private:
    static int Receive(int, int, void*, void* message) {
        auto* const self = static_cast<SlowMessage*>(message);
        self->isBeingDelivered = true;
        WaitUntil([self] { return self->mayEnd.load(); });
        self->hasEnded = true;
        return 0;
    }
};

void Count(void* counter) {
    ++*static_cast<std::atomic<int>*>(counter);
}

TEST(VELSysConsumerTest, DeliversMessagesInTheirOrderOnItsOwnThread) {
    Recorder recorder;
    VELSysConsumer consumer;
    EXPECT_EQ(consumer.Start(-1, nullptr, nullptr), 0);
    for (int code = 1; code <= 3; ++code) {
        SendCode(consumer, code, recorder);
    }
    ASSERT_TRUE(recorder.HasDelivered(3));
    EXPECT_THAT(recorder.GetDelivered(), ElementsAre(1, 2, 3));
    EXPECT_NE(recorder.GetThread(), std::this_thread::get_id());
}

TEST(VELSysConsumerTest, CallsTheTimeOutFunctionEachTimeAWaitRunsOut) {
    std::atomic<int> timeOuts{0};
    VELSysConsumer consumer;
    EXPECT_EQ(consumer.Start(5, Count, &timeOuts), 0);
    EXPECT_TRUE(WaitUntil([&] { return timeOuts >= 3; }));
}

TEST(VELSysConsumerTest, TheTimeOutFunctionIsNotCalledBeforeTheTime) {
    std::atomic<int> timeOuts{0};
    VELSysConsumer consumer;
    consumer.Start(60000, Count, &timeOuts);
    Recorder recorder;
    SendCode(consumer, 1, recorder);
    ASSERT_TRUE(recorder.HasDelivered(1));
    consumer.Stop();
    EXPECT_EQ(timeOuts, 0);
}

TEST(VELSysConsumerTest, AWaitBelowOneHasNoLimit) {
    for (int milliseconds : {-1, 0}) {
        std::atomic<int> timeOuts{0};
        VELSysConsumer consumer;
        EXPECT_EQ(consumer.Start(milliseconds, Count, &timeOuts), 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        consumer.Stop();
        EXPECT_EQ(timeOuts, 0);
    }
}

TEST(VELSysConsumerTest, AMessageIsDeliveredWithATimeOutFunctionThatIsNull) {
    Recorder recorder;
    VELSysConsumer consumer;
    consumer.Start(1, nullptr, nullptr);
    SendCode(consumer, 1, recorder);
    EXPECT_TRUE(recorder.HasDelivered(1));
}

TEST(VELSysConsumerTest, StartOnARunningConsumerReplacesTheTimeAndTheFunction) {
    std::atomic<int> first{0};
    std::atomic<int> second{0};
    Recorder recorder;
    VELSysConsumer consumer;
    consumer.Start(-1, Count, &first);
    SendCode(consumer, 1, recorder);
    ASSERT_TRUE(recorder.HasDelivered(1));
    // The thread is in its wait by then, or else on its way into it; either way the new time is to hold.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(consumer.Start(5, Count, &second), 0);
    EXPECT_TRUE(WaitUntil([&] { return second >= 2; }));
    EXPECT_EQ(first, 0);
}

TEST(VELSysConsumerTest, EachMessageBeginsANewWait) {
    constexpr std::chrono::milliseconds wait(500);
    std::atomic<int> timeOuts{0};
    Recorder recorder;
    VELSysConsumer consumer;
    consumer.Start(static_cast<int>(wait.count()), Count, &timeOuts);
    const Stopwatch whole;
    std::chrono::milliseconds longestGap(0);
    for (int code = 1; whole.Elapsed() < 2 * wait; ++code) {
        const Stopwatch gap;
        SendCode(consumer, code, recorder);
        ASSERT_TRUE(recorder.HasDelivered(static_cast<unsigned long>(code)));
        std::this_thread::sleep_for(wait / 20);
        longestGap = std::max(longestGap, gap.Elapsed());
    }
    const int seen = timeOuts;
    if (longestGap > wait / 2) {
        GTEST_SKIP() << "the machine is too busy to keep the messages close to each other";
    }
    EXPECT_EQ(seen, 0);
    EXPECT_TRUE(WaitUntil([&] { return timeOuts > 0; }));
}

TEST(VELSysConsumerTest, StartFromWithinAMessageIsTaken) {
    struct Starter {
        VELSysConsumer consumer;
        std::atomic<int> result{7};
    } starter;
    starter.consumer.Start(-1, nullptr, nullptr);
    VELSysProducer(
        &starter.consumer, 2,
        [](int, int cancel, void*, void* data) {
            auto* const self = static_cast<Starter*>(data);
            self->result = cancel ? 8 : self->consumer.Start(-1, nullptr, nullptr);
            return 0;
        },
        &starter);
    EXPECT_TRUE(WaitUntil([&] { return starter.result != 7; }));
    EXPECT_EQ(starter.result, 0);
    EXPECT_TRUE(starter.consumer.IsRunning());
}

TEST(VELSysConsumerTest, MessagesWaitForTheStart) {
    Recorder recorder;
    VELSysConsumer consumer;
    SendCode(consumer, 1, recorder);
    EXPECT_THAT(recorder.GetDelivered(), IsEmpty());
    consumer.Start(-1, nullptr, nullptr);
    EXPECT_TRUE(recorder.HasDelivered(1));
}

TEST(VELSysConsumerTest, IsRunningFromStartToStop) {
    VELSysConsumer consumer;
    EXPECT_FALSE(consumer.IsRunning());
    consumer.Start(-1, nullptr, nullptr);
    EXPECT_TRUE(consumer.IsRunning());
    consumer.Stop();
    EXPECT_FALSE(consumer.IsRunning());
}

TEST(VELSysConsumerTest, StopEndsAWaitAtOnce) {
    for (int milliseconds : {-1, 60000}) {
        VELSysConsumer consumer;
        consumer.Start(milliseconds, nullptr, nullptr);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        const Stopwatch watch;
        consumer.Stop();
        EXPECT_LT(watch.Elapsed(), s_promptly);
    }
}

TEST(VELSysConsumerTest, StopWaitsForTheMessageThatIsBeingDelivered) {
    VELSysConsumer consumer;
    consumer.Start(-1, nullptr, nullptr);
    SlowMessage message(consumer);
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        message.mayEnd = true;
    });
    const Stopwatch watch;
    consumer.Stop();
    EXPECT_TRUE(message.hasEnded);
    EXPECT_LT(watch.Elapsed(), s_promptly);
    release.join();
}

TEST(VELSysConsumerTest, StopCancelsTheMessagesThatWaitOnTheCallingThread) {
    Recorder recorder;
    VELSysConsumer consumer;
    consumer.Start(-1, nullptr, nullptr);
    SlowMessage message(consumer);
    SendCode(consumer, 1, recorder);
    SendCode(consumer, 2, recorder);
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        message.mayEnd = true;
    });
    consumer.Stop();
    release.join();
    EXPECT_THAT(recorder.GetDelivered(), IsEmpty());
    EXPECT_THAT(recorder.GetCancelled(), ElementsAre(1, 2));
    EXPECT_EQ(recorder.GetThread(), std::this_thread::get_id());
}

TEST(VELSysConsumerTest, StopOfAConsumerThatDoesNotRunCancelsToo) {
    Recorder recorder;
    VELSysConsumer consumer;
    SendCode(consumer, 1, recorder);
    consumer.Stop();
    consumer.Stop();
    EXPECT_THAT(recorder.GetCancelled(), ElementsAre(1));
}

TEST(VELSysConsumerTest, CanBeStartedAgainAfterStop) {
    Recorder recorder;
    VELSysConsumer consumer;
    for (int round = 1; round <= 3; ++round) {
        EXPECT_EQ(consumer.Start(-1, nullptr, nullptr), 0);
        SendCode(consumer, round, recorder);
        EXPECT_TRUE(recorder.HasDelivered(static_cast<unsigned long>(round)));
        consumer.Stop();
    }
    EXPECT_THAT(recorder.GetDelivered(), ElementsAre(1, 2, 3));
}

/// What a consumer's own function does with its consumer.
struct OwnFunction {
    static int StopIt(int, int cancel, void*, void* data) {
        auto* const self = static_cast<OwnFunction*>(data);
        if (!cancel) {
            self->consumer->Stop();
            self->startAfterStop = self->consumer->Start(-1, nullptr, nullptr);
            self->isOver = true;
        }
        return 0;
    }
    static int DestroyIt(int, int cancel, void*, void* data) {
        auto* const self = static_cast<OwnFunction*>(data);
        if (!cancel) {
            self->consumer.reset();
            self->isOver = true;
        }
        return 0;
    }
    static void StopAtTimeOut(void* data) {
        auto* const self = static_cast<OwnFunction*>(data);
        self->consumer->Stop();
        self->isOver = true;
    }

    std::unique_ptr<VELSysConsumer> consumer = std::make_unique<VELSysConsumer>();
    std::atomic<int> startAfterStop{7};
    std::atomic<bool> isOver{false};
};

TEST(VELSysConsumerTest, StopFromWithinAMessageCancelsTheOthersAndReturns) {
    OwnFunction own;
    Recorder recorder;
    VELSysProducer(own.consumer.get(), 1, OwnFunction::StopIt, &own);
    SendCode(*own.consumer, 2, recorder);
    own.consumer->Start(-1, nullptr, nullptr);
    EXPECT_TRUE(WaitUntil([&] { return own.isOver.load(); }));
    EXPECT_EQ(own.startAfterStop, -1);
    EXPECT_THAT(recorder.GetCancelled(), ElementsAre(2));
    EXPECT_FALSE(own.consumer->IsRunning());
    EXPECT_EQ(own.consumer->Start(-1, nullptr, nullptr), 0);
    SendCode(*own.consumer, 3, recorder);
    EXPECT_TRUE(recorder.HasDelivered(1));
}

TEST(VELSysConsumerTest, StopFromWithinTheTimeOutFunctionReturns) {
    OwnFunction own;
    own.consumer->Start(1, OwnFunction::StopAtTimeOut, &own);
    EXPECT_TRUE(WaitUntil([&] { return own.isOver.load(); }));
    own.consumer->Stop();
    EXPECT_FALSE(own.consumer->IsRunning());
}

TEST(VELSysConsumerTest, AConsumerMayBeDestroyedFromWithinItsOwnMessage) {
    OwnFunction own;
    own.consumer->Start(-1, nullptr, nullptr);
    VELSysConsumer* const consumer = own.consumer.get();
    VELSysProducer(consumer, 1, OwnFunction::DestroyIt, &own);
    EXPECT_TRUE(WaitUntil([&] { return own.isOver.load(); }));
    EXPECT_EQ(own.consumer, nullptr);
}

TEST(VELSysConsumerTest, TwoConsumersThatStopEachOtherBothEnd) {
    struct Pair {
        static int StopOther(int code, int cancel, void*, void* data) {
            auto* const self = static_cast<Pair*>(data);
            if (!cancel) {
                ++self->inside;
                WaitUntil([self] { return self->inside == 2; });
                self->consumers[1 - code].Stop();
                ++self->stopped;
            }
            return 0;
        }
        VELSysConsumer consumers[2];
        std::atomic<int> inside{0};
        std::atomic<int> stopped{0};
    } pair;
    for (int number = 0; number < 2; ++number) {
        pair.consumers[number].Start(-1, nullptr, nullptr);
        VELSysProducer(&pair.consumers[number], number, Pair::StopOther, &pair);
    }
    EXPECT_TRUE(WaitUntil([&] { return pair.stopped == 2; }));
}

TEST(VELSysConsumerTest, AMessageMayJoinAThreadThatSentIt) {
    // The way in which a watcher has itself run again: the consumer joins it and runs it once more.
    struct Restart {
        static int Watch(void* data) {
            auto* const self = static_cast<Restart*>(data);
            if (++self->runs < 5) {
                VELSysProducer(&self->consumer, 2, RunAgain, self);
            }
            return 0;
        }
        static int RunAgain(int, int cancel, void*, void* data) {
            auto* const self = static_cast<Restart*>(data);
            if (!cancel) {
                self->watcher.Join();
                self->consumer.Start(-1, nullptr, nullptr);
                self->watcher.Run();
            }
            return 0;
        }
        VELSysThread watcher;
        VELSysConsumer consumer;
        std::atomic<int> runs{0};
    } restart;
    restart.watcher.SetFunction(Restart::Watch, &restart, 0);
    restart.consumer.Start(-1, nullptr, nullptr);
    restart.watcher.Run();
    EXPECT_TRUE(WaitUntil([&] { return restart.runs == 5; }));
    restart.consumer.Stop();
    EXPECT_EQ(restart.watcher.Join(), 0);
}

TEST(VELSysConsumerTest, TheDestructorStopsAndCancels) {
    Recorder recorder;
    {
        VELSysConsumer consumer;
        SendCode(consumer, 1, recorder);
    }
    EXPECT_THAT(recorder.GetCancelled(), ElementsAre(1));
}

TEST(VELSysConsumerTest, SeveralThreadsMayStop) {
    VELSysConsumer consumer;
    consumer.Start(-1, nullptr, nullptr);
    SlowMessage message(consumer);
    RunAtOnce(4, [&](int number) {
        if (number == 0) {
            message.mayEnd = true;
        }
        consumer.Stop();
        EXPECT_TRUE(message.hasEnded);
    });
}

TEST(VELSysConsumerTest, StartWaitsForAStopUnderWay) {
    VELSysConsumer consumer;
    consumer.Start(-1, nullptr, nullptr);
    SlowMessage message(consumer);
    std::thread stopper([&] { consumer.Stop(); });
    EXPECT_TRUE(WaitUntil([&] { return !consumer.IsRunning(); }));
    std::thread release([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        message.mayEnd = true;
    });
    EXPECT_EQ(consumer.Start(-1, nullptr, nullptr), 0);
    EXPECT_TRUE(message.hasEnded);
    stopper.join();
    release.join();
    EXPECT_TRUE(consumer.IsRunning());
}

TEST(VELSysConsumerTest, MemoryShortageRefusesAStart) {
    alignas(VELSysConsumer) unsigned char storage[sizeof(VELSysConsumer)];
    VELSysConsumer* stateless = nullptr;
    {
        const FailingAllocation shortage(1);
        stateless = new (storage) VELSysConsumer;
    }
    EXPECT_EQ(stateless->Start(-1, nullptr, nullptr), -1);
    stateless->Stop();
    EXPECT_FALSE(stateless->IsRunning());
    EXPECT_EQ(VELSysProducer(
                  stateless, 1, [](int, int, void*, void*) { return 0; }, nullptr)
                  .Send(nullptr),
              -1);
    stateless->~VELSysConsumer();

    VELSysConsumer consumer;
    {
        const FailingAllocation shortage(1);
        EXPECT_EQ(consumer.Start(-1, nullptr, nullptr), -1);
    }
    EXPECT_FALSE(consumer.IsRunning());
    EXPECT_EQ(consumer.Start(-1, nullptr, nullptr), 0);
}

TEST(VELSysConsumerTest, AStartThatIsRefusedLeavesNothingBehind) {
    const long blocks = CountBlocks();
    {
        VELSysConsumer consumer;
        const FailingAllocation shortage(1);
        EXPECT_EQ(consumer.Start(-1, nullptr, nullptr), -1);
    }
    EXPECT_EQ(CountBlocks(), blocks);
}

/// Stops its consumer and starts it again when the consumer's thread ends.
struct ThreadLocalStopper {
    ~ThreadLocalStopper() {
        if (consumer) {
            consumer->Stop();
            *startAfterStop = consumer->Start(-1, nullptr, nullptr);
        }
    }

    VELSysConsumer* consumer = nullptr;
    std::atomic<int>* startAfterStop = nullptr;
};

thread_local ThreadLocalStopper t_stopper;

TEST(VELSysConsumerTest, AThreadLocalObjectOfItsThreadMayStopIt) {
    struct Setter {
        VELSysConsumer consumer;
        std::atomic<int> startAfterStop{7};
        std::atomic<bool> isSet{false};
    } setter;
    setter.consumer.Start(-1, nullptr, nullptr);
    VELSysProducer(
        &setter.consumer, 2,
        [](int, int, void*, void* data) {
            auto* const self = static_cast<Setter*>(data);
            t_stopper.consumer = &self->consumer;
            t_stopper.startAfterStop = &self->startAfterStop;
            self->isSet = true;
            return 0;
        },
        &setter);
    ASSERT_TRUE(WaitUntil([&] { return setter.isSet.load(); }));
    setter.consumer.Stop();
    EXPECT_EQ(setter.startAfterStop, -1);
    EXPECT_FALSE(setter.consumer.IsRunning());
}

TEST(VELSysConsumerTest, StartAfterStopIsRefusedOnAThreadThatItsFunctionJoins) {
    struct Starter {
        static int StopAndJoin(int, int cancel, void*, void* data) {
            auto* const self = static_cast<Starter*>(data);
            if (!cancel) {
                self->consumer.Stop();
                self->hasStopped = true;
                self->joined = self->starter.Join();
            }
            return 0;
        }
        static int Start(void* data) {
            auto* const self = static_cast<Starter*>(data);
            WaitUntil([self] { return self->hasStopped.load(); });
            // Long enough for the consumer to be within its join.
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            return self->consumer.Start(-1, nullptr, nullptr);
        }
        VELSysThread starter;
        VELSysConsumer consumer;
        std::atomic<bool> hasStopped{false};
        std::atomic<int> joined{7};
    } own;
    own.starter.SetFunction(Starter::Start, &own, 0);
    own.starter.Run();
    own.consumer.Start(-1, nullptr, nullptr);
    VELSysProducer(&own.consumer, 2, Starter::StopAndJoin, &own);
    EXPECT_TRUE(WaitUntil([&] { return own.joined != 7; }));
    EXPECT_EQ(own.joined, 0);
    EXPECT_EQ(own.starter.GetResult(), -1);
}

TEST(VELSysConsumerTest, EveryMessageIsDeliveredOrCancelledOnce) {
    constexpr int rounds = 200;
    Recorder recorder;
    std::atomic<int> timeOuts{0};
    auto consumer = std::make_unique<VELSysConsumer>();
    RunAtOnce(4, [&](int number) {
        for (int round = 0; round < rounds; ++round) {
            if (number == 0) {
                consumer->Start(1, Count, &timeOuts);
                consumer->Stop();
                continue;
            }
            SendCode(*consumer, number, recorder);
        }
    });
    consumer.reset();
    EXPECT_EQ(recorder.GetDelivered().size() + recorder.GetCancelled().size(), 3u * rounds);
}

} // namespace
