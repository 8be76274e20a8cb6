/// @file
/// The shared registry of code set conversions.
#pragma once

/// Handle of one direction of a registered conversion: even for the direction that was registered first, the even
/// value plus 1 for the opposite one. 0 is a valid handle.
using IConvDesc_t = int;
