# The program's own functions are named, so it exports them, and they are walked along their frame pointers.
qor_add_benchmark(StackTraceBenchmark SOURCES StackTraceBenchmark.cpp LINK QORSysTS ${CMAKE_DL_LIBS})
set_target_properties(StackTraceBenchmark PROPERTIES ENABLE_EXPORTS ON)
target_compile_options(StackTraceBenchmark PRIVATE -fno-omit-frame-pointer)
