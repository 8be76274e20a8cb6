# qor_add_library(<name> VERSION <v> INCLUDE_DIR <dir> SOURCES <files...>
#                 [LINK <libs...>] [LINK_PRIVATE <libs...>] [PRIVATE_INCLUDE <dirs...>])
#
# One object library, and from the same objects the shared library <name> and the static one <name>_static.
# Names are hidden unless a header exports them, so the static form is the one through which white-box tests
# reach private pieces.
#
# LINK is what a client of the headers links too. LINK_PRIVATE is what only the code behind them calls: give it as plain
# library names (crypto, lz4), so that a client who finds the package needs no development files of theirs.
function(qor_add_library name)
  cmake_parse_arguments(ARG "" "VERSION;INCLUDE_DIR;BUILDING_MACRO" "SOURCES;LINK;LINK_PRIVATE;PRIVATE_INCLUDE" ${ARGN})
  string(REGEX MATCH "^[0-9]+" soversion ${ARG_VERSION})
  if(NOT ARG_BUILDING_MACRO)
    if(name STREQUAL "QORSysMultiThreading")
      set(ARG_BUILDING_MACRO QORSYSMT_BUILDING)
    else()
      set(ARG_BUILDING_MACRO QORSYSTS_BUILDING)
    endif()
  endif()

  add_library(${name}_objects OBJECT ${ARG_SOURCES})
  target_include_directories(${name}_objects PUBLIC ${ARG_INCLUDE_DIR} PRIVATE ${ARG_PRIVATE_INCLUDE})
  target_compile_definitions(${name}_objects PRIVATE ${ARG_BUILDING_MACRO})
  # All imported functions are bound at load: calling them straight from their slots saves a jump.
  target_compile_options(${name}_objects PRIVATE -fno-plt)
  target_link_libraries(${name}_objects PUBLIC ${ARG_LINK})
  set_target_properties(${name}_objects PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)

  add_library(${name} SHARED $<TARGET_OBJECTS:${name}_objects>)
  target_link_options(${name} PRIVATE -Wl,--as-needed -Wl,-z,relro -Wl,-z,now -Wl,--hash-style=gnu)
  # Life-cycle participants, threads and exit handlers hold on to the code, so it stays when the library is closed.
  target_link_options(${name} PRIVATE -Wl,-z,nodelete)
  # Its own functions are bound when it is linked: each name that the loader looks up costs loading time.
  target_link_options(${name} PRIVATE -Wl,-Bsymbolic-functions)
  if(NOT QORSYSTS_SANITIZE)
    target_link_options(${name} PRIVATE -Wl,-z,defs)
  endif()
  # Hidden visibility doesn't reach what the C++ library's own templates leave in our objects.
  target_link_options(${name} PRIVATE -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map)
  set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  add_library(${name}_static STATIC $<TARGET_OBJECTS:${name}_objects>)
  # Not lib<name>_static.a: both forms of one library bear one name.
  set_target_properties(${name}_static PROPERTIES OUTPUT_NAME ${name} EXPORT_NAME ${name}_static)
  set_target_properties(${name} PROPERTIES VERSION ${ARG_VERSION} SOVERSION ${soversion})
  if(QORSysMultiThreading IN_LIST ARG_LINK)
    # Once installed, the companion is found beside the library, wherever the prefix is moved; another companion stays
    # where it is.
    set(install_rpath $ORIGIN)
    if(QORSYSMT_LIBRARY)
      get_filename_component(companion_directory ${QORSYSMT_LIBRARY} DIRECTORY)
      list(APPEND install_rpath ${companion_directory})
    endif()
    set_target_properties(${name} PROPERTIES INSTALL_RPATH "${install_rpath}")
  endif()

  foreach(target ${name} ${name}_static)
    target_include_directories(${target} PUBLIC
      $<BUILD_INTERFACE:${ARG_INCLUDE_DIR}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/QORSysTS>)
    target_compile_features(${target} INTERFACE cxx_std_17)
  endforeach()
  set(static_link ${ARG_LINK})
  list(TRANSFORM static_link REPLACE "^QORSysMultiThreading$" "QORSysMultiThreading_static")
  target_link_libraries(${name} PUBLIC ${ARG_LINK} PRIVATE ${ARG_LINK_PRIVATE})
  target_link_libraries(${name}_static PUBLIC ${static_link} PRIVATE ${ARG_LINK_PRIVATE})
  add_library(QORSysTS::${name} ALIAS ${name})

  install(TARGETS ${name} ${name}_static EXPORT QORSysTSTargets
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(DIRECTORY ${ARG_INCLUDE_DIR}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/QORSysTS
          FILES_MATCHING PATTERN "*.h" PATTERN "*.inc")
endfunction()
