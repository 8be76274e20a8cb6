find_package(Qt6 REQUIRED COMPONENTS Core)
qor_add_benchmark(NumberBenchmark SOURCES NumberBenchmark.cpp LINK QORSysTS Qt6::Core)
