find_package(Qt6 REQUIRED COMPONENTS Core)
qor_add_benchmark(StringBenchmark SOURCES StringBenchmark.cpp LINK QORSysTS Qt6::Core)
qor_add_benchmark(StringThreadsBenchmark SOURCES StringThreadsBenchmark.cpp LINK QORSysTS Qt6::Core)
find_package(PkgConfig REQUIRED)
find_package(absl REQUIRED)
pkg_check_modules(ICU_UC REQUIRED IMPORTED_TARGET icu-uc)
qor_add_benchmark(StringOperationsBenchmark
  SOURCES StringOperationsBenchmark.cpp
  LINK QORSysTS Qt6::Core PkgConfig::ICU_UC absl::strings)
