find_package(Qt6 REQUIRED COMPONENTS Core)
qor_add_benchmark(StringBenchmark SOURCES StringBenchmark.cpp LINK QORSysTS Qt6::Core)
qor_add_benchmark(StringThreadsBenchmark SOURCES StringThreadsBenchmark.cpp LINK QORSysTS Qt6::Core)
