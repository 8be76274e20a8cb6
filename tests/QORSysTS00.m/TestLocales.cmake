# Locales for tests, compiled into the build tree: ${QOR_TEST_LOCALES} is a directory for LOCPATH, the target
# qor_test_locales makes them. Turkish has a rule of its own for the letter i, ISO-8859-1 has one byte a character and a
# comma in numbers, EUC-JP up to three bytes a character, SHIFT_JIS up to two, whose second may be ASCII, GB18030 up to
# four; long_currency and middle_dot stand beside this file.
include_guard(GLOBAL)
find_program(LOCALEDEF localedef REQUIRED)
set(QOR_TEST_LOCALES ${PROJECT_BINARY_DIR}/test-locales CACHE INTERNAL "")
file(MAKE_DIRECTORY ${QOR_TEST_LOCALES})

set(locales
  en_US.UTF-8 tr_TR.UTF-8 fr_FR.UTF-8 de_DE.ISO-8859-1 ja_JP.EUC-JP ja_JP.SHIFT_JIS ko_KR.EUC-KR zh_CN.GB18030
  zh_CN.GB2312 zh_TW.BIG5 long_currency.UTF-8 middle_dot.UTF-8 middle_dot.ISO-8859-1)
set(compiled)
foreach(locale ${locales})
  string(REGEX MATCH "^([^.]+)[.](.+)$" parts ${locale})
  set(source ${CMAKE_MATCH_1})
  set(charmap ${CMAKE_MATCH_2})
  set(dependency)
  if(EXISTS ${CMAKE_CURRENT_LIST_DIR}/${source})
    set(source ${CMAKE_CURRENT_LIST_DIR}/${source})
    set(dependency ${source})
  endif()
  add_custom_command(
    OUTPUT ${QOR_TEST_LOCALES}/${locale}/LC_CTYPE
    COMMAND ${LOCALEDEF} --no-archive --no-warnings=ascii -i ${source} -f ${charmap} ${QOR_TEST_LOCALES}/${locale}
    DEPENDS ${dependency}
    COMMENT "Compiling the locale ${locale} for tests"
    VERBATIM)
  list(APPEND compiled ${QOR_TEST_LOCALES}/${locale}/LC_CTYPE)
endforeach()
add_custom_target(qor_test_locales DEPENDS ${compiled})

# A locale's name need not name its code set as the table does. In LANG, a name with a semicolon is one locale for the
# C library, and for the C++ library a broken list of categories.
file(CREATE_LINK ${QOR_TEST_LOCALES}/de_DE.ISO-8859-1 "${QOR_TEST_LOCALES}/de_DE;comma" SYMBOLIC)
file(CREATE_LINK ${QOR_TEST_LOCALES}/middle_dot.UTF-8 "${QOR_TEST_LOCALES}/middle_dot;utf8" SYMBOLIC)
file(CREATE_LINK ${QOR_TEST_LOCALES}/middle_dot.ISO-8859-1 "${QOR_TEST_LOCALES}/middle_dot;latin1" SYMBOLIC)
file(CREATE_LINK ${QOR_TEST_LOCALES}/ja_JP.SHIFT_JIS ${QOR_TEST_LOCALES}/ja_JP.SJIS SYMBOLIC)
