# The tests choose the environment's code page, and what some calls of the system answer.
set(file_calls
  ${string_environment}
  _Z20VELSysGetCmdLineArgsRiRPPc _ZN3VEL8internal8HttpInfoEv _ZN3VEL8internal11GetRealPathEv
  opendir readdir64 closedir fnmatch sendfile fread fclose setxattr removexattr listxattr getxattr getpwuid_r getrandom
  _ZdaPv)

qor_add_test(FilesTest
  SOURCES
    FileCalls.cpp
    StringEnvironment.cpp
    VELSysADSTest.cpp
    VELSysDirectoryIteratorTest.cpp
    VELSysFileCopyTest.cpp
    VELSysFileFinderTest.cpp
    VELSysFileSearchTest.cpp
    VELSysFileTest.cpp
  LINK QORSysTS_static ONE_THREAD)
qor_wrap(FilesTest ${file_calls})

qor_add_test(FilesShortageTest SOURCES FailingNew.cpp FilesShortageTest.cpp HeapLog.cpp StringEnvironment.cpp
  LINK QORSysTS_static ONE_THREAD)
qor_wrap(FilesShortageTest ${string_environment} malloc realloc free _Znwm _Znam _ZnwmRKSt9nothrow_t _ZnamRKSt9nothrow_t
         _Z13VELDebugBreaki _ZN3VEL8internal15PrintStackTraceEv)
