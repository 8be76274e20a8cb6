find_package(Boost REQUIRED COMPONENTS filesystem)
find_package(Qt6 REQUIRED COMPONENTS Core)
qor_add_benchmark(PathBenchmark SOURCES PathBenchmark.cpp LINK QORSysTS Boost::filesystem Qt6::Core)
