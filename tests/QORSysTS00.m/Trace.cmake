# Traces. The tests choose the time and what the configuration says.
set(trace_calls
  _Z23VELSysTimerGetTimeOfDayP7timeval time stat64 mkdir
  _ZN3VEL8internal14ApplyTraceLineEPKcRKNS0_9TraceSinkE _ZN3VEL8internal18ApplyTraceVariableERKNS0_9TraceSinkE
  _ZN3VEL8internal21ApplyTraceOptionFilesERKNS0_9TraceSinkE)

qor_add_test(TraceTest
  SOURCES
    FailingNew.cpp
    HeapLog.cpp
    TraceDestinationSystemTest.cpp
    TraceDestinationTest.cpp
    TraceHandleTest.cpp
    TraceLineTest.cpp
    TraceManagerTest.cpp
    TraceSupport.cpp
  LINK QORSysTS_static ONE_THREAD)
qor_wrap(TraceTest ${trace_calls} malloc realloc free _Z13VELDebugBreaki _Znwm _Znam _ZnwmRKSt9nothrow_t
         _ZnamRKSt9nothrow_t)
qor_wrap(TraceTest fclose open posix_fallocate strdup unlink)

qor_add_test(TraceRotatedLineTest
  SOURCES FailingNew.cpp HeapLog.cpp StringEnvironment.cpp TraceRotatedLineTest.cpp TraceSupport.cpp
  LINK QORSysTS_static ONE_THREAD)
qor_wrap(TraceRotatedLineTest ${trace_calls} ${string_environment} malloc realloc free _Z13VELDebugBreaki _Znwm _Znam
         _ZnwmRKSt9nothrow_t _ZnamRKSt9nothrow_t)

qor_add_test(TraceThreadsTest SOURCES TraceSupport.cpp TraceThreadsTest.cpp LINK QORSysTS_static)
target_compile_definitions(TraceThreadsTest PRIVATE QOR_TEST_DATA="${PROJECT_SOURCE_DIR}/data")
qor_wrap(TraceThreadsTest ${trace_calls})

qor_add_test(TraceCrashTest SOURCES TraceCrashTest.cpp TraceSupport.cpp LINK QORSysTS_static)
qor_wrap(TraceCrashTest ${trace_calls})
