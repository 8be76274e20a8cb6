# Locales for tests, compiled into the build tree: ${QOR_TEST_LOCALES} is a directory for LOCPATH, the target
# qor_test_locales makes it.
include_guard(GLOBAL)
find_program(LOCALEDEF localedef REQUIRED)
set(QOR_TEST_LOCALES ${PROJECT_BINARY_DIR}/test-locales CACHE INTERNAL "")
file(MAKE_DIRECTORY ${QOR_TEST_LOCALES})

add_custom_command(
  OUTPUT ${QOR_TEST_LOCALES}/en_US.UTF-8/LC_CTYPE
  COMMAND ${LOCALEDEF} --no-archive -i en_US -f UTF-8 ${QOR_TEST_LOCALES}/en_US.UTF-8
  COMMENT "Compiling the locale en_US.UTF-8 for tests"
  VERBATIM)
add_custom_target(qor_test_locales DEPENDS ${QOR_TEST_LOCALES}/en_US.UTF-8/LC_CTYPE)
