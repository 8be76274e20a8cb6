foreach(name QORUnicodeStringBuildFromSTEPFuzz QORUnicodeStringWildMatchFuzz StringOperationsFuzz)
  qor_add_fuzzer(${name} SOURCES ${name}.cpp LINK QORSysTS_static)
  # The model and the plain forms are those of the tests.
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/QORSysTS00.m)
endforeach()
