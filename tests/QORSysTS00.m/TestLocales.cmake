# Locales for tests, compiled into the build tree: ${QOR_TEST_LOCALES} is a directory for LOCPATH, the target
# qor_test_locales makes them. Turkish has a rule of its own for the letter i, ISO-8859-1 has one byte a character and a
# comma in numbers, EUC-JP up to three bytes a character, SHIFT_JIS up to two, whose second may be ASCII; long_currency
# and middle_dot stand beside this file.
include_guard(GLOBAL)
find_program(LOCALEDEF localedef REQUIRED)
set(QOR_TEST_LOCALES ${PROJECT_BINARY_DIR}/test-locales CACHE INTERNAL "")
file(MAKE_DIRECTORY ${QOR_TEST_LOCALES})

set(locales en_US.UTF-8 tr_TR.UTF-8 de_DE.ISO-8859-1 ja_JP.EUC-JP ja_JP.SHIFT_JIS long_currency.UTF-8
    middle_dot.UTF-8 middle_dot.ISO-8859-1)
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
