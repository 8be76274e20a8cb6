# The tests load this by its file, so that it is there, or don't, so that it isn't.
add_library(PX4GROUP SHARED GroupLibrary.cpp)

function(qor_use_group_library target)
  add_dependencies(${target} PX4GROUP)
  target_compile_definitions(${target} PRIVATE GROUP_LIBRARY="$<TARGET_FILE:PX4GROUP>")
endfunction()

qor_add_test(VELSysPathTest
  SOURCES
    PathTrace.cpp
    StringEnvironment.cpp
    VELSysPathBuildTest.cpp
    VELSysPathChangesTest.cpp
    VELSysPathDirectoriesTest.cpp
    VELSysPathPartsTest.cpp
    VELSysPathQueriesTest.cpp
    VELSysPathTypeTest.cpp
  LINK QORSysTS_static ${CMAKE_DL_LIBS} ONE_THREAD)
qor_use_group_library(VELSysPathTest)
qor_wrap(VELSysPathTest ${string_environment} umask lstat64
         _Z19VELSysTraceCreate__PPvPKc _Z20VELSysTraceDestroy__PPv _ZN3VEL8internal9TraceInfoEPvPKcz)

qor_add_test(VELSysPathRemovalTest SOURCES VELSysPathRemovalTest.cpp LINK QORSysTS_static ${CMAKE_DL_LIBS})
qor_use_group_library(VELSysPathRemovalTest)
qor_wrap(VELSysPathRemovalTest rmdir unlinkat openat)

qor_add_test(VELSysPathShortageTest
  SOURCES FailingNew.cpp HeapLog.cpp StringEnvironment.cpp VELSysPathShortageTest.cpp
  LINK QORSysTS_static ${CMAKE_DL_LIBS} ONE_THREAD)
qor_use_group_library(VELSysPathShortageTest)
qor_wrap(VELSysPathShortageTest ${string_environment} malloc realloc free strdup strndup _Z13VELDebugBreaki _Znwm _Znam
         _ZnwmRKSt9nothrow_t _ZnamRKSt9nothrow_t)
