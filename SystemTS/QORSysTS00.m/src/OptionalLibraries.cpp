#include "OptionalLibraries.h"

#include "QORThrLibraryManager.h"

namespace VEL::internal {
namespace {

template <class Function>
Function FindInGroupLibrary(const char* name) {
    return reinterpret_cast<Function>(QORThrLibraryManager::GetFunctionAddress("PX4GROUP", name));
}

} // namespace

HttpInfoFunction HttpInfo() {
    static const auto function = FindInGroupLibrary<HttpInfoFunction>("HttpInfo");
    return function;
}

GetRealPathFunction GetRealPath() {
    static const auto function = FindInGroupLibrary<GetRealPathFunction>("VELGetRealPath");
    return function;
}

} // namespace VEL::internal
