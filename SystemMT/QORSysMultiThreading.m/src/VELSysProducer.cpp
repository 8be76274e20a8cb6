#include "VELSysProducer.h"

#include "ConsumerState.h"
#include "VELSysConsumer.h"

VELSysProducer::VELSysProducer(VELSysConsumer* consumer, int code, VELSysProducerFunction function, void* userData)
    : _state(consumer ? consumer->_state : nullptr), _function(function), _userData(userData), _code(code),
      _hasSent(false) {}

VELSysProducer::~VELSysProducer() {
    if (!_hasSent) {
        Send(nullptr);
    }
}

int VELSysProducer::Send(void* data) {
    _hasSent = true;
    if (!_state || !_function) {
        return -1;
    }
    return _state->Send({_function, _code, data, _userData});
}
