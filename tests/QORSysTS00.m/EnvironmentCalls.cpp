#include "EnvironmentCalls.h"

#include <cstdarg>
#include <cstdio>
#include <gtest/gtest.h>

using namespace EnvironmentCalls;

namespace {

int s_traceObject = 0;

} // namespace

extern "C" void __wrap__Z19VELSysTraceCreate__PPvPKc(void** handle, const char* name) {
    EXPECT_EQ(*handle, nullptr);
    traces.push_back(std::string("create ") + name);
    if (insideTraceCreate != nullptr) {
        insideTraceCreate();
    }
    if (isTraced) {
        *handle = &s_traceObject;
    }
}

extern "C" void __wrap__Z20VELSysTraceDestroy__PPv(void** handle) {
    traces.push_back(*handle != nullptr ? "destroy" : "destroy null");
    if (insideTraceDestroy != nullptr) {
        insideTraceDestroy();
    }
    *handle = nullptr;
}

extern "C" int __wrap__ZN3VEL8internal9TraceInfoEPvPKcz(void* trace, const char* format, ...) {
    EXPECT_EQ(trace, &s_traceObject);
    char line[20000];
    std::va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    lines.push_back(line);
    return 0;
}

extern "C" const char* __wrap__Z51VELSysNeutralCoreApplicationGetEnvironmentVariableAPKc(const char* name) {
    asked.push_back(name);
    const auto variable = applicationVariables.find(name);
    return variable != applicationVariables.end() ? variable->second.c_str() : nullptr;
}

extern "C" const char* __wrap__Z21VELGetMainInstallPathv() {
    asked.push_back("install path");
    return installPath;
}
