// A library that is loaded by name, and that registers a module for as long as it is loaded.

#include "VELSysLifeCycle.h"

namespace {

/// Unloading the library takes this code away, so a call that comes too late cannot go unnoticed.
void OnState(int) {}

class Module {
public:
    Module() : _record(VELSysLifeCycleGlobalFactoryInternal("TestPlugIn", nullptr, OnState, nullptr, 1)) {}
    ~Module() { VELSysLifeCycleGlobalFactoryInternalCheck(_record); }

private:
    VELSysLifeCycleStruct* _record;
};

const Module s_module;

} // namespace

extern "C" int QORSysMTTestPlugInAnswer() {
    return 42;
}
