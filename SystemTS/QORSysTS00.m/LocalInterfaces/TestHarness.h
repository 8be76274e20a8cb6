/// @file
/// Whether the process runs under the family's test harness.
#pragma once

namespace VEL::internal {

/// True when the environment variable "KVT_RTX_IN" is set; read once per process.
bool IsInRTX();

} // namespace VEL::internal
