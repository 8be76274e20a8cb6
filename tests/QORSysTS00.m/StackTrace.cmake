# The tests' own functions are named, so they are exported, and they are walked along their frame pointers.
qor_add_test(QORStackTraceTest
  SOURCES QORStackTraceTest.cpp QORStackTraceContextTest.cpp StackSamples.cpp
  LINK QORSysTS_static ${CMAKE_DL_LIBS})
set_target_properties(QORStackTraceTest PROPERTIES ENABLE_EXPORTS ON)
# Traces have no virtual destructor, and neither have those that the tests derive.
target_compile_options(QORStackTraceTest PRIVATE
  -fno-omit-frame-pointer -fno-optimize-sibling-calls -Wno-non-virtual-dtor)
qor_wrap(QORStackTraceTest process_vm_readv pipe2)
