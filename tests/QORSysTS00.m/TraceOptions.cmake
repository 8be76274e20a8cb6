# The configuration of traces: its two grammars, the variable, the option files. Whether there is a manager the tests say
# themselves.
include(${CMAKE_CURRENT_LIST_DIR}/TestLocales.cmake)

set(trace_manager_held
  _ZN3VEL8internal16TraceManagerLockC1Ev _ZN3VEL8internal16TraceManagerLockD1Ev)

qor_add_test(VELSysTraceOptionsTest
  SOURCES
    StringEnvironment.cpp
    TraceCommandGrammarTest.cpp
    TraceLineGrammarTest.cpp
    TraceManagerHeld.cpp
    VELSysTraceOptionsTest.cpp
  LINK QORSysTS_static ONE_THREAD)
target_compile_definitions(VELSysTraceOptionsTest PRIVATE QOR_TEST_LOCALES="${QOR_TEST_LOCALES}")
add_dependencies(VELSysTraceOptionsTest qor_test_locales)
qor_wrap(VELSysTraceOptionsTest ${string_environment} ${trace_manager_held} opendir)

qor_add_test(TraceOptionsShortageTest
  SOURCES FailingNew.cpp HeapLog.cpp StringEnvironment.cpp TraceManagerHeld.cpp TraceOptionsShortageTest.cpp
  LINK QORSysTS_static ONE_THREAD)
qor_wrap(TraceOptionsShortageTest ${string_environment} ${trace_manager_held} malloc realloc free _Znwm _Znam
         _ZnwmRKSt9nothrow_t _ZnamRKSt9nothrow_t asprintf _Z13VELDebugBreaki _ZN3VEL8internal15PrintStackTraceEv)
