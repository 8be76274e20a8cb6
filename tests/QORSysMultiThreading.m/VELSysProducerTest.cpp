#include "VELSysProducer.h"

#include "FailingAllocation.h"
#include "TestSupport.h"
#include "VELSysConsumer.h"

#include <gtest/gtest.h>
#include <memory>
#include <optional>

namespace {

/// The arguments of the last call, and the number of calls.
struct Receiver {
    static int Receive(int code, int cancel, void* data, void* userData) {
        auto* const self = static_cast<Receiver*>(userData);
        self->code = code;
        self->cancel = cancel;
        self->data = data;
        ++self->calls;
        return -1;
    }
    bool HasReceived(int count) const {
        return WaitUntil([this, count] { return calls >= count; });
    }

    int code = 0;
    int cancel = 7;
    void* data = nullptr;
    std::atomic<int> calls{0};
};

TEST(VELSysProducerTest, ItsFunctionReceivesCodeCancelDataAndUserWord) {
    int data = 0;
    Receiver receiver;
    VELSysConsumer consumer;
    consumer.Start(-1, nullptr, nullptr);
    VELSysProducer producer(&consumer, 18, Receiver::Receive, &receiver);
    EXPECT_EQ(producer.Send(&data), 0);
    ASSERT_TRUE(receiver.HasReceived(1));
    EXPECT_EQ(receiver.code, 18);
    EXPECT_EQ(receiver.cancel, 0);
    EXPECT_EQ(receiver.data, &data);
}

TEST(VELSysProducerTest, TheDestructorSendsTheRequest) {
    Receiver receiver;
    VELSysConsumer consumer;
    consumer.Start(-1, nullptr, nullptr);
    {
        VELSysProducer producer(&consumer, 2, Receiver::Receive, &receiver);
        EXPECT_EQ(receiver.calls, 0);
    }
    ASSERT_TRUE(receiver.HasReceived(1));
    EXPECT_EQ(receiver.code, 2);
    EXPECT_EQ(receiver.cancel, 0);
    EXPECT_EQ(receiver.data, nullptr);
}

TEST(VELSysProducerTest, TheDestructorSendsNothingMoreAfterSend) {
    Receiver receiver;
    VELSysConsumer consumer;
    {
        VELSysProducer producer(&consumer, 2, Receiver::Receive, &receiver);
        producer.Send(nullptr);
    }
    consumer.Stop();
    EXPECT_EQ(receiver.calls, 1);
}

TEST(VELSysProducerTest, ManyMessagesMayBeSent) {
    Receiver receiver;
    VELSysConsumer consumer;
    consumer.Start(-1, nullptr, nullptr);
    VELSysProducer producer(&consumer, 2, Receiver::Receive, &receiver);
    for (int round = 0; round < 10; ++round) {
        EXPECT_EQ(producer.Send(nullptr), 0);
    }
    EXPECT_TRUE(receiver.HasReceived(10));
}

TEST(VELSysProducerTest, WithoutAConsumerOrAFunctionMessagesAreRefused) {
    Receiver receiver;
    VELSysConsumer consumer;
    EXPECT_EQ(VELSysProducer(nullptr, 2, Receiver::Receive, &receiver).Send(nullptr), -1);
    EXPECT_EQ(VELSysProducer(&consumer, 2, nullptr, &receiver).Send(nullptr), -1);
    EXPECT_EQ(receiver.calls, 0);
}

TEST(VELSysProducerTest, MayOutliveItsConsumer) {
    Receiver receiver;
    std::optional<VELSysConsumer> consumer(std::in_place);
    {
        VELSysProducer producer(&*consumer, 2, Receiver::Receive, &receiver);
        VELSysProducer request(&*consumer, 3, Receiver::Receive, &receiver);
        consumer.reset();
        EXPECT_EQ(producer.Send(nullptr), -1);
    }
    EXPECT_EQ(receiver.calls, 0);
}

TEST(VELSysProducerTest, MemoryShortageRefusesAMessage) {
    Receiver receiver;
    VELSysConsumer consumer;
    VELSysProducer producer(&consumer, 2, Receiver::Receive, &receiver);
    EXPECT_EQ(SweepAllocations([&](const FailingAllocation& shortage) {
                  const int result = producer.Send(nullptr);
                  EXPECT_EQ(result, shortage.HasFailed() ? -1 : 0);
              }),
              1);
    consumer.Stop();
    EXPECT_EQ(receiver.calls, 1);
}

TEST(VELSysProducerTest, TheDestructorSendsNothingMoreAfterASendThatWasRefused) {
    Receiver receiver;
    VELSysConsumer consumer;
    {
        VELSysProducer producer(&consumer, 2, Receiver::Receive, &receiver);
        const FailingAllocation shortage(1);
        EXPECT_EQ(producer.Send(nullptr), -1);
    }
    {
        // Without the refused message this one is a request that its destructor sends.
        const VELSysProducer producer(&consumer, 3, Receiver::Receive, &receiver);
    }
    consumer.Stop();
    EXPECT_EQ(receiver.calls, 1);
    EXPECT_EQ(receiver.code, 3);
}

TEST(VELSysProducerTest, ThreadsSendAtOnceThroughOneProducer) {
    constexpr int rounds = 500;
    Receiver receiver;
    VELSysConsumer consumer;
    consumer.Start(-1, nullptr, nullptr);
    VELSysProducer producer(&consumer, 2, Receiver::Receive, &receiver);
    RunAtOnce(4, [&](int) {
        for (int round = 0; round < rounds; ++round) {
            EXPECT_EQ(producer.Send(nullptr), 0);
        }
    });
    EXPECT_TRUE(receiver.HasReceived(4 * rounds));
}

} // namespace
