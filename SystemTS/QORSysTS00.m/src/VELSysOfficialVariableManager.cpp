#include "VELSysOfficialVariableManager.h"

#include "VELSysStatus.h"

namespace {

bool IsKnown(VELSysOfficialPathVariable which) {
    return which >= 0 && which < VELSysOfficialPathVariableCount;
}

} // namespace

int VELSysOfficialVariableManager::getPathFromOfficialVariable(VELSysOfficialPathVariable which, VELSysPath& out) {
    if (!IsKnown(which)) {
        return VEL::StatusFailure;
    }
    out = _paths[which];
    return VEL::StatusOk;
}

int VELSysOfficialVariableManager::setOfficialVariable(VELSysOfficialPathVariable which, VELSysPath& path) {
    if (!IsKnown(which) || !path.IsDirectory(0)) {
        return VEL::StatusFailure;
    }
    _paths[which] = path;
    return VEL::StatusOk;
}
