foreach(name QORToken QORSysStrtokLegacy)
  qor_add_fuzzer(${name}Fuzz SOURCES ${name}Fuzz.cpp LINK QORSysTS_static)
endforeach()
