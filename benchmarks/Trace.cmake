find_package(glog REQUIRED)
find_package(Qt6 REQUIRED COMPONENTS Core)
find_package(spdlog REQUIRED)
# Brings its own `main`, which configures the traces.
qor_add_benchmark(TraceBenchmark SOURCES TraceBenchmark.cpp LINK QORSysTS glog::glog Qt6::Core spdlog::spdlog)
qor_add_benchmark(TraceRotateBenchmark SOURCES TraceRotateBenchmark.cpp LINK QORSysTS spdlog::spdlog)
