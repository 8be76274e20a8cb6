qor_add_fuzzer(ListFuzz SOURCES ListFuzz.cpp LINK QORSysTS_static)
qor_add_fuzzer(VectorFuzz SOURCES VectorFuzz.cpp LINK QORSysTS_static)
qor_add_fuzzer(MapFuzz SOURCES MapFuzz.cpp LINK QORSysTS_static)
qor_add_fuzzer(SimpleHashTableFuzz SOURCES SimpleHashTableFuzz.cpp LINK QORSysTS_static)
