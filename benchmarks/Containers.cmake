find_package(Qt6 REQUIRED COMPONENTS Core)
find_package(absl REQUIRED)
qor_add_benchmark(VectorBenchmark SOURCES VectorBenchmark.cpp LINK QORSysTS Qt6::Core absl::inlined_vector)
