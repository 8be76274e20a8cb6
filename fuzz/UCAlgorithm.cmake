foreach(name
    Utf8To16 Utf8To32 Utf16To8 Utf16To32 Utf32To16 Utf32To8
    ConvertUTF8ToUTF16 ConvertUTF16ToUTF8 ConvertUTF8ToUCS2Legacy
    IsUTF8 CharUTF8Len HashV3FromUTF8 HashV3FromUCS2 Decoders)
  qor_add_fuzzer(VELSysUCAlgorithm${name}Fuzz
    SOURCES VELSysUCAlgorithm${name}Fuzz.cpp LINK QORSysTS_static)
endforeach()
