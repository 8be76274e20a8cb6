# Variables, command lines, options, the development stage and the official variables. What the tests are told by higher
# rooms, and what they are to tell them, they choose and record themselves.
set(environment_calls
  _Z19VELSysTraceCreate__PPvPKc _Z20VELSysTraceDestroy__PPv _ZN3VEL8internal9TraceInfoEPvPKcz
  _Z51VELSysNeutralCoreApplicationGetEnvironmentVariableAPKc _Z21VELGetMainInstallPathv)
# How the parts of a manager come and go.
set(environment_parts
  _ZN10VELSysListC2Eib _ZN10VELSysList9removeallEv _ZN15VELSysHashTableC2Eii _ZdaPv _ZdlPv _ZdlPvm)
set(environment_heap
  malloc realloc free _Z13VELDebugBreaki _Znwm _Znam _ZnwmRKSt9nothrow_t _ZnamRKSt9nothrow_t)

qor_add_test(VELSysEnvironmentManagerTest
  SOURCES
    EnvironmentCalls.cpp
    FailingNew.cpp
    HeapLog.cpp
    StringEnvironment.cpp
    VELSysEnvironmentExpansionTest.cpp
    VELSysEnvironmentListsTest.cpp
    VELSysEnvironmentManagerTest.cpp
    VELSysEnvironmentPartsTest.cpp
    VELSysEnvironmentShortageTest.cpp
    VELSysEnvironTest.cpp
  LINK QORSysTS_static ONE_THREAD)
qor_wrap(VELSysEnvironmentManagerTest ${string_environment} ${environment_calls} ${environment_parts}
         ${environment_heap})

qor_add_test(VELSysCommandLineTest
  SOURCES VELSysCommandLineTest.cpp VELSysCommandOptionTest.cpp LINK QORSysTS_static EXHAUSTIVE ONE_THREAD)

add_library(QORSysTSTestDevPhase SHARED DevPhasePlugIn.cpp)
add_library(QORSysTSTestOtherDevPhase SHARED DevPhasePlugIn.cpp)
target_compile_definitions(QORSysTSTestDevPhase PRIVATE DEV_PHASE_FUNCTION=InDevPhase)
target_compile_definitions(QORSysTSTestOtherDevPhase PRIVATE DEV_PHASE_FUNCTION=Other)
foreach(library DevPhase OtherDevPhase)
  set_target_properties(QORSysTSTest${library} PROPERTIES
    OUTPUT_NAME PZ4DevPhase LIBRARY_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/${library})
endforeach()
qor_add_test(VELSysDevelopmentStageTest
  SOURCES FailingNew.cpp HeapLog.cpp VELSysDevelopmentStageTest.cpp LINK QORSysTS_static ONE_THREAD)
target_compile_definitions(VELSysDevelopmentStageTest PRIVATE
  WITH_DEV_PHASE="${CMAKE_CURRENT_BINARY_DIR}/DevPhase" WITH_OTHER_DEV_PHASE="${CMAKE_CURRENT_BINARY_DIR}/OtherDevPhase")
add_dependencies(VELSysDevelopmentStageTest QORSysTSTestDevPhase QORSysTSTestOtherDevPhase)
qor_wrap(VELSysDevelopmentStageTest ${environment_heap} _ZdlPv _ZdlPvm _Z13VELSysGetEnvAPmPcmPKc _Z26VELSysLifeCycleDynamicLoadPKcPPv
         _Z33VELSysLifeCycleDynamicGetFunctionPvPKc _Z28VELSysLifeCycleDynamicUnloadPv)

qor_add_test(VELSysOfficialVariableManagerTest
  SOURCES VELSysOfficialVariableManagerTest.cpp LINK QORSysTS_static ONE_THREAD)
