/// @file
/// Names that traces and destinations have of themselves.
#pragma once

namespace VEL::internal {

/// The trace that is always there, and where it goes.
inline constexpr char TraceCommonName[] = "COMMON";
inline constexpr char TraceCommonDestination[] = "STDOUT_COMMON";

/// The destinations that are standard streams.
inline constexpr char TraceStandardOutput[] = "STDOUT";
inline constexpr char TraceStandardError[] = "STDERR";

} // namespace VEL::internal
