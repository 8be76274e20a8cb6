/// @file
/// What the fuzzers of the traces' configuration share.
#pragma once

#include "StringFuzz.h"
#include "TraceCalls.h"
#include "VELSysTraceManager.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace TraceFuzz {

/// Keeps what it is told, which is in the terms of the manager.
struct Checker : TraceCalls::Recorder {
    static int AddTrace(int kind, const char* destination, const char* name, void* data) {
        StringFuzz::Require(kind == VELSysTraceKindStream || kind == VELSysTraceKindSystem);
        return Recorder::AddTrace(kind, destination, name, data);
    }
    static int AddOption(const char* destination, int option, int value, void* data) {
        StringFuzz::Require(option == VELSysTraceOptionActive ||
                            (option >= VELSysTraceOptionMaximumCode && option <= VELSysTraceOptionRotateCount));
        return Recorder::AddOption(destination, option, value, data);
    }
    VEL::internal::TraceSink Sink() { return {AddTrace, AddOption, static_cast<Recorder*>(this)}; }
};

inline std::string TextOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

} // namespace TraceFuzz
