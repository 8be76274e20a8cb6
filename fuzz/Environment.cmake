foreach(name CommandLine CommandOption ArgumentStore)
  qor_add_fuzzer(${name}Fuzz SOURCES ${name}Fuzz.cpp LINK QORSysTS_static)
  target_include_directories(${name}Fuzz PRIVATE ${PROJECT_SOURCE_DIR}/tests/QORSysTS00.m)
endforeach()
