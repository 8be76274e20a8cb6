/// @file
/// How `iconv_open` and VELSysIConvTSWrap::GetIConvDesc() say that there is no descriptor.
#pragma once

#include <iconv.h>

namespace VEL::internal {

inline const auto NoDescriptor = reinterpret_cast<iconv_t>(-1);

} // namespace VEL::internal
