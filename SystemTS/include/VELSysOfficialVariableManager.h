/// @file
/// The well-known directories of the product.
#pragma once

#include "QORSysTSExport.h"
#include "VELSysPath.h"

/// The directories that are known.
enum VELSysOfficialPathVariable : int {
    VELSysOfficialPathInstall,       ///< Where the product is installed.
    VELSysOfficialPathReference,     ///< Reference files.
    VELSysOfficialPathUserSettings,  ///< Settings of the user.
    VELSysOfficialPathTemporary,     ///< Temporary files.
    VELSysOfficialPathTrace,         ///< Trace files.
    VELSysOfficialPathVariableCount, ///< Their number.
};

/// Keeps the well-known directories as paths, all of them empty at first. There is no lock.
class QORSYSTS_EXPORT VELSysOfficialVariableManager {
public:
    /// Copies the path of `which` into `out`.
    /// @return 0, or VEL::StatusFailure, with `out` untouched, when there is no such variable.
    int getPathFromOfficialVariable(VELSysOfficialPathVariable which, VELSysPath& out);

    /// Sets `which` to a copy of `path`.
    /// @return 0, or VEL::StatusFailure, with the old path in place, when `path` is no directory or there is no such
    ///         variable.
    int setOfficialVariable(VELSysOfficialPathVariable which, VELSysPath& path);

private:
    VELSysPath _paths[VELSysOfficialPathVariableCount];
};
