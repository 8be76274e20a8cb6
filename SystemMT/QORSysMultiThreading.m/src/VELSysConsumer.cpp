#include "VELSysConsumer.h"

#include "ConsumerState.h"

#include <new>

using VEL::internal::ConsumerState;

VELSysConsumer::VELSysConsumer() {
    try {
        _state = std::make_shared<ConsumerState>();
    } catch (const std::bad_alloc&) {
        // Start and the producers refuse.
    }
}

VELSysConsumer::~VELSysConsumer() {
    if (!_state) {
        return;
    }
    _state->Stop();
    _state->Close();
}

int VELSysConsumer::Start(int milliseconds, void (*function)(void*), void* data) {
    return _state ? _state->Start(milliseconds, function, data) : -1;
}

void VELSysConsumer::Stop() {
    if (_state) {
        _state->Stop();
    }
}

bool VELSysConsumer::IsRunning() const {
    return _state && _state->IsRunning();
}
