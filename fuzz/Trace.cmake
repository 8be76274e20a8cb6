qor_add_fuzzer(ReferenceTraceOptionsFuzz SOURCES ReferenceTraceOptionsFuzz.cpp LINK QORSysTS_static)
qor_add_fuzzer(VELSysTraceFilterNameByPidFuzz SOURCES VELSysTraceFilterNameByPidFuzz.cpp LINK QORSysTS_static)

# The configuration of traces. There is a manager where a target says so.
foreach(name TraceLineGrammar TraceCommandGrammar TraceOptionFile)
  qor_add_fuzzer(${name}Fuzz
    SOURCES ${name}Fuzz.cpp ${PROJECT_SOURCE_DIR}/tests/QORSysTS00.m/TraceManagerHeld.cpp
    LINK QORSysTS_static)
  target_include_directories(${name}Fuzz PRIVATE ${PROJECT_SOURCE_DIR}/tests/QORSysTS00.m)
  foreach(symbol _ZN3VEL8internal16TraceManagerLockC1Ev _ZN3VEL8internal16TraceManagerLockD1Ev)
    target_link_options(${name}Fuzz PRIVATE -Wl,--wrap=${symbol})
  endforeach()
endforeach()
