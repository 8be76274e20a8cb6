find_package(Qt6 REQUIRED COMPONENTS Core)
find_package(Boost REQUIRED COMPONENTS filesystem)
qor_add_benchmark(FileBenchmark SOURCES FileBenchmark.cpp LINK QORSysTS Qt6::Core Boost::filesystem)
