/// @file
/// Whether this run is a developer's or a test run.
#pragma once

#include "QORSysTSExport.h"

/// What says that this is a development run; bits of the stage mask.
enum VELSysDevelopmentStageBit : int {
    VELSysDevelopmentStageByVariable = 1, ///< The variable "QORDevelopmentStage" said so.
    VELSysDevelopmentStageByLibrary = 2,  ///< The library "PZ4DevPhase" is there and exports "InDevPhase".
};

/// What holds the stage.
class QORSYSTS_EXPORT VELSysDevelopmentStageManagerImplementation {
public:
    VELSysDevelopmentStageManagerImplementation() = default;
    VELSysDevelopmentStageManagerImplementation(const VELSysDevelopmentStageManagerImplementation&) = delete;
    VELSysDevelopmentStageManagerImplementation& operator=(const VELSysDevelopmentStageManagerImplementation&) = delete;
    virtual ~VELSysDevelopmentStageManagerImplementation();

    int stage = 0; ///< Bits of ::VELSysDevelopmentStageBit.
};

/// The one object of the process.
class QORSYSTS_EXPORT VELSysDevelopmentStageManager : public VELSysDevelopmentStageManagerImplementation {
public:
    ~VELSysDevelopmentStageManager() override;
};

/// Tells the stage. The first call finds it out, later ones answer the same. There is no lock: the first call is made
/// during start-up.
/// @param stage  Receives bits of ::VELSysDevelopmentStageBit, 0 for a user's run.
/// @return 0, or -1 when `stage` is null or memory is short.
QORSYSTS_EXPORT int VELSysDevelopmentStage(int* stage);

/// Forgets the stage: the next call of VELSysDevelopmentStage() finds it out anew.
QORSYSTS_EXPORT void VELSysDevelopmentStageClear();
