find_package(PkgConfig REQUIRED)
find_package(Qt6 REQUIRED COMPONENTS Core)
find_package(absl REQUIRED)
pkg_check_modules(ICU_UC REQUIRED IMPORTED_TARGET icu-uc)
qor_add_benchmark(TokenBenchmark
  SOURCES TokenBenchmark.cpp
  LINK QORSysTS Qt6::Core absl::strings PkgConfig::ICU_UC)
