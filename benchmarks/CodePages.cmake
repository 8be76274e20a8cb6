qor_add_benchmark(IConvBenchmark SOURCES IConvBenchmark.cpp LINK QORSysTS)
