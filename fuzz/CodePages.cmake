foreach(name VELSysCodePageToUTF16Fuzz VELSysCodePageFromUTF16Fuzz)
  qor_add_fuzzer(${name} SOURCES ${name}.cpp LINK QORSysTS_static)
  # The plain form is that of the tests.
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/QORSysTS00.m)
endforeach()
