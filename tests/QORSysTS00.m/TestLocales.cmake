# Locales for tests, compiled into the build tree: ${QOR_TEST_LOCALES} is a directory for LOCPATH, the target
# qor_test_locales makes them. Turkish has a rule of its own for the letter i, and ISO-8859-1 has one byte a character.
include_guard(GLOBAL)
find_program(LOCALEDEF localedef REQUIRED)
set(QOR_TEST_LOCALES ${PROJECT_BINARY_DIR}/test-locales CACHE INTERNAL "")
file(MAKE_DIRECTORY ${QOR_TEST_LOCALES})

set(locales en_US.UTF-8 tr_TR.UTF-8 de_DE.ISO-8859-1)
set(compiled)
foreach(locale ${locales})
  string(REGEX MATCH "^([^.]+)[.](.+)$" parts ${locale})
  add_custom_command(
    OUTPUT ${QOR_TEST_LOCALES}/${locale}/LC_CTYPE
    COMMAND ${LOCALEDEF} --no-archive -i ${CMAKE_MATCH_1} -f ${CMAKE_MATCH_2} ${QOR_TEST_LOCALES}/${locale}
    COMMENT "Compiling the locale ${locale} for tests"
    VERBATIM)
  list(APPEND compiled ${QOR_TEST_LOCALES}/${locale}/LC_CTYPE)
endforeach()
add_custom_target(qor_test_locales DEPENDS ${compiled})
