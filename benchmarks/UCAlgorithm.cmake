find_package(PkgConfig REQUIRED)
find_package(Iconv REQUIRED)
find_package(Qt6 REQUIRED COMPONENTS Core)
find_package(absl REQUIRED)
pkg_check_modules(ICU_UC REQUIRED IMPORTED_TARGET icu-uc)

qor_add_benchmark(UnicodeConversionBenchmark
  SOURCES UnicodeConversionBenchmark.cpp
  LINK QORSysTS Iconv::Iconv Qt6::Core PkgConfig::ICU_UC)

qor_add_benchmark(HashBenchmark
  SOURCES HashBenchmark.cpp
  LINK QORSysTS absl::hash)
