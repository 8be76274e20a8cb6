find_package(spdlog REQUIRED)
qor_add_benchmark(TraceRotateBenchmark SOURCES TraceRotateBenchmark.cpp LINK QORSysTS spdlog::spdlog)
