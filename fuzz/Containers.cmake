qor_add_fuzzer(VectorFuzz SOURCES VectorFuzz.cpp LINK QORSysTS_static)
