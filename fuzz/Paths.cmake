qor_add_fuzzer(VELSysPathFuzz SOURCES VELSysPathFuzz.cpp LINK QORSysTS_static)
target_include_directories(VELSysPathFuzz PRIVATE ${PROJECT_SOURCE_DIR}/tests/QORSysTS00.m)
