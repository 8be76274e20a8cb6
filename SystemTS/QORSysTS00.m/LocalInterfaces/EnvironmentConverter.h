/// @file
/// The converter of the environment's code page, which strings ask for from below: what narrow text means is a decision
/// of the language support above them.
#pragma once

#include "VELSysCodePage.h"

namespace VEL::internal {

/// The converter in force; see VELSysCodePage::GetEnvConverter().
inline const VELSysCodePage& EnvironmentConverter() {
    return VELSysCodePage::GetEnvConverter();
}

} // namespace VEL::internal
