#include "TraceManagerHeld.h"

#include "TraceManagerLock.h"

#include <cstring>

using VEL::internal::TraceManagerLock;

static_assert(sizeof(TraceManagerLock) >= sizeof TraceManagerHeld::manager);

extern "C" void __wrap__ZN3VEL8internal16TraceManagerLockC1Ev(TraceManagerLock* lock) {
    ++TraceManagerHeld::taken;
    ++TraceManagerHeld::held;
    std::memcpy(static_cast<void*>(lock), &TraceManagerHeld::manager, sizeof TraceManagerHeld::manager);
}

extern "C" void __wrap__ZN3VEL8internal16TraceManagerLockD1Ev(TraceManagerLock*) {
    --TraceManagerHeld::held;
}
