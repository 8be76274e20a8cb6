/// @file
/// Times as the traces show them.
#pragma once

#include <ctime>

namespace VEL::internal {

/// The fields of a time, in UTC or in the time zone of the moment; all 0, which is the day 0 of January 1900, for a
/// time that the calendar can't hold.
inline std::tm TraceTimeFields(std::time_t time, bool isLocalTime) {
    std::tm fields{};
    if (isLocalTime) {
        tzset();
    }
    const bool isHeld = (isLocalTime ? localtime_r(&time, &fields) : gmtime_r(&time, &fields)) != nullptr;
    return isHeld ? fields : std::tm{};
}

/// The year of these fields, which may be more than an `int` can hold.
inline long TraceYear(const std::tm& fields) {
    constexpr long epochYear = 1900;
    return epochYear + fields.tm_year;
}

} // namespace VEL::internal
