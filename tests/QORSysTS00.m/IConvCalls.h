/// @file
/// What the converter registry asks of the C library and of the companion, recorded; refusals on demand.
#pragma once

#include "VELSysIConvTSWrap.h"
#include "VELSysStatus.h"

#include <functional>
#include <gtest/gtest.h>
#include <iconv.h>
#include <string>
#include <vector>

namespace IConvCalls {

/// The calls of `iconv_open`, in order, each as "from > to".
std::vector<std::string> Opens();
/// The descriptors that were opened, in order.
std::vector<iconv_t> Opened();
/// The descriptors that were closed, in order.
std::vector<iconv_t> Closed();
/// The calls that make, fill, empty and delete mutex and queue, in order.
std::vector<std::string> Companion();

/// The entries that were put on the queue, in order; they stay the registry's.
std::vector<const void*> Entries();

/// Makes `iconv_open` fail for one direction.
void Refuse(const std::string& from, const std::string& to);
/// Runs `action` inside the next call of `iconv_open`, before it opens anything.
void InsideNextOpen(std::function<void()> action);
/// Runs `action` inside the next call of `iconv_close`, before it closes anything.
void InsideNextClose(std::function<void()> action);

inline const iconv_t None = reinterpret_cast<iconv_t>(-1);

/// Opens a conversion, which must succeed.
inline IConvDesc_t HandleOf(const char* to, const char* from) {
    IConvDesc_t handle = -77;
    EXPECT_EQ(VELSysIConvTSWrap::Open(to, from, handle), VEL::StatusOk);
    return handle;
}

} // namespace IConvCalls
