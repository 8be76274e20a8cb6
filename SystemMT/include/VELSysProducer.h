/// @file
/// The sender of messages to a consumer.
#pragma once

#include "QORSysMTExport.h"

#include <atomic>
#include <memory>

class VELSysConsumer;

namespace VEL::internal {
struct ConsumerState;
}

/// Receives a message.
/// @param code      The producer's code.
/// @param cancel    0 when the message is delivered; 1 when it never will be, so that what it holds can be released.
/// @param data      The message's data, null for the message of a destructor.
/// @param userData  The producer's user word.
/// @return Read by nobody.
using VELSysProducerFunction = int (*)(int code, int cancel, void* data, void* userData);

/// Sends messages of one kind to one consumer, which hands them to the producer's function on its own thread.
///
/// A producer whose `Send` was never called is a single request: its destructor sends one message without data. It
/// never waits for a delivery. The function and the user word must stay good until the last message is delivered or
/// cancelled. All operations but the destructor may be called by any thread at once.
class QORSYSMT_EXPORT VELSysProducer {
public:
    /// @param consumer  Where messages go; it may be destroyed first. With null every message is refused.
    /// @param code      Handed to `function` with each message.
    /// @param function  Receives the messages. With null every message is refused.
    /// @param userData  Handed to `function`; stays the caller's.
    VELSysProducer(VELSysConsumer* consumer, int code, VELSysProducerFunction function, void* userData);
    VELSysProducer(const VELSysProducer&) = delete;
    VELSysProducer& operator=(const VELSysProducer&) = delete;

    /// Sends one message with null data, unless `Send` was called, be it in vain. A refusal is not told.
    virtual ~VELSysProducer();

    /// Sends one message.
    /// @param data  Handed to the function. It stays the caller's when the message is refused.
    /// @return 0 when the message is on its way: its function will be called once, to deliver or to cancel it. -1 when
    ///         it is refused, because the consumer is gone or memory is short.
    int Send(void* data);

private:
    std::shared_ptr<VEL::internal::ConsumerState> _state;
    VELSysProducerFunction _function;
    void* _userData;
    int _code;
    std::atomic<bool> _hasSent;
};
