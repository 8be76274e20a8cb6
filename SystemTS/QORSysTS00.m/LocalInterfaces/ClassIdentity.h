/// @file
/// What `ClassId` of the string classes points to.
#pragma once

namespace VEL::internal {

/// A block of 16 bytes, all zero: only its address tells one class from another.
struct ClassIdentity {
    unsigned char bytes[16];
};

} // namespace VEL::internal
