#include "TestHarness.h"

#include <cstdlib>

bool VEL::internal::IsInRTX() {
    static const bool isSet = std::getenv("KVT_RTX_IN") != nullptr;
    return isSet;
}
