# The language core. Most tests play scripts in child processes, whose environment and locales they choose.
include(TestLocales.cmake)

function(qor_add_language_test name)
  qor_add_test(${name} SOURCES ${name}.cpp LanguageChild.cpp ${ARGN} LINK QORSysTS_static)
  target_compile_definitions(${name} PRIVATE
    QOR_TEST_LOCALES="${QOR_TEST_LOCALES}" QOR_LANGUAGE_TABLE="${PROJECT_SOURCE_DIR}/data/NLS/SUPPLANG_R9")
  add_dependencies(${name} qor_test_locales)
  qor_wrap(${name} setlocale nl_langinfo)
endfunction()

qor_add_language_test(LanguageDecisionTest)
qor_add_language_test(LanguageTableTest)
qor_wrap(LanguageTableTest fdopen fopen)
qor_add_language_test(LanguageQueriesTest)
qor_add_language_test(LanguageHooksTest)
qor_add_language_test(LanguageAdoptionTest)
qor_wrap(LanguageAdoptionTest _Z25VELSysCLocaleSetPerThreadi _ZNSt6localeC1EPKc _Znwm)
qor_add_language_test(LanguageThreadsTest)
qor_wrap(LanguageThreadsTest newlocale)
qor_add_language_test(FirstUseTest)
qor_add_language_test(LanguageShortageTest FailingNew.cpp HeapLog.cpp)
qor_wrap(LanguageShortageTest malloc realloc free _Z13VELDebugBreaki _Znwm _Znam _ZnwmRKSt9nothrow_t
         _ZnamRKSt9nothrow_t)
