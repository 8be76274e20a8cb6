#include "VELSysDevelopmentStage.h"

#include "VELSysEnviron.h"
#include "VELSysLifeCycle.h"

#include <memory>
#include <new>
#include <strings.h>
#include <utility>

static_assert(sizeof(VELSysDevelopmentStageManagerImplementation) == 16);
static_assert(sizeof(VELSysDevelopmentStageManager) == 16);

namespace {

constinit VELSysDevelopmentStageManager* s_manager = nullptr;
/// Set once the stage is being found out; what it holds is the answer from then on.
constinit VELSysDevelopmentStageManagerImplementation* s_implementation = nullptr;

bool DoesTheVariableSaySo() {
    constexpr const char* variable = "QORDevelopmentStage";
    std::size_t length = 0;
    if (VELSysGetEnvA(&length, nullptr, 0, variable) != 0) {
        return false;
    }
    const std::unique_ptr<char[]> value(new (std::nothrow) char[length + 1]());
    if (value == nullptr || VELSysGetEnvA(&length, value.get(), length + 1, variable) != 0) {
        return false;
    }
    return strcasecmp(value.get(), "TRUE") == 0 || strcasecmp(value.get(), "YES") == 0;
}

/// The function is not called: that it is there is the signal.
bool DoesTheLibrarySaySo() {
    void* library = nullptr;
    if (VELSysLifeCycleDynamicLoad("PZ4DevPhase", &library) != 0) {
        return false;
    }
    // Unloaded either way: one without the function is of no use, and would stay for good.
    const bool isThere = VELSysLifeCycleDynamicGetFunction(library, "InDevPhase") != nullptr;
    VELSysLifeCycleDynamicUnload(library);
    return isThere;
}

} // namespace

VELSysDevelopmentStageManagerImplementation::~VELSysDevelopmentStageManagerImplementation() = default;

VELSysDevelopmentStageManager::~VELSysDevelopmentStageManager() = default;

int VELSysDevelopmentStage(int* stage) {
    if (stage == nullptr) {
        return -1;
    }
    if (s_implementation == nullptr) {
        if (s_manager == nullptr) {
            s_manager = new (std::nothrow) VELSysDevelopmentStageManager;
        }
        if (s_manager == nullptr) {
            return -1;
        }
        s_manager->stage = 0;
        s_implementation = s_manager;
        if (DoesTheVariableSaySo()) {
            s_manager->stage |= VELSysDevelopmentStageByVariable;
        } else if (DoesTheLibrarySaySo()) {
            s_manager->stage |= VELSysDevelopmentStageByLibrary;
        }
    }
    *stage = s_implementation->stage;
    return 0;
}

void VELSysDevelopmentStageClear() {
    s_implementation = nullptr;
    delete std::exchange(s_manager, nullptr);
}
