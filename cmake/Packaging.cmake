# The CMake package, the pkg-config files and the language table of an installation. Everything installed finds its
# neighbours from where it stands itself, so that a prefix can be moved as a whole.
include(CMakePackageConfigHelpers)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/QORSysTS)
install(EXPORT QORSysTSTargets NAMESPACE QORSysTS:: DESTINATION ${package_dir})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/QORSysTSConfig.cmake.in
  ${PROJECT_BINARY_DIR}/QORSysTSConfig.cmake INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QORSysTSConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QORSysTSConfig.cmake ${PROJECT_BINARY_DIR}/QORSysTSConfigVersion.cmake
        DESTINATION ${package_dir})

# The pkg-config files tell directories relative to their own, unless an absolute one was asked for.
set(pc_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(PC_PREFIX ${CMAKE_INSTALL_PREFIX})
  set(PC_LIBDIR ${CMAKE_INSTALL_LIBDIR})
else()
  file(RELATIVE_PATH pc_to_prefix /${pc_dir} /)
  string(REGEX REPLACE "/$" "" pc_to_prefix ${pc_to_prefix})
  set(PC_PREFIX "\${pcfiledir}/${pc_to_prefix}")
  set(PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(IS_ABSOLUTE ${CMAKE_INSTALL_INCLUDEDIR})
  set(PC_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/QORSysTS)
else()
  set(PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}/QORSysTS")
endif()

set(pc_files QORSysTS)
if(QORSYSMT_ROOT)
  # Another companion need not come with a pkg-config file of its own.
  get_filename_component(companion_libdir ${QORSYSMT_LIBRARY} DIRECTORY)
  set(PC_REQUIRES "")
  set(PC_COMPANION_LIBS " -L${companion_libdir} -lQORSysMultiThreading")
  set(PC_COMPANION_CFLAGS " -I${QORSYSMT_INCLUDE_DIR}")
else()
  list(APPEND pc_files QORSysMultiThreading)
  set(PC_REQUIRES "QORSysMultiThreading = ${PROJECT_VERSION}")
endif()
# What the static form needs besides.
get_target_property(private_libraries QORSysTS_static LINK_LIBRARIES)
set(PC_LIBS_PRIVATE "")
foreach(library IN LISTS private_libraries)
  if(library MATCHES "^[a-z0-9_]+$")
    string(APPEND PC_LIBS_PRIVATE " -l${library}")
  endif()
endforeach()
foreach(library IN LISTS pc_files)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${library}.pc.in ${PROJECT_BINARY_DIR}/${library}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${library}.pc DESTINATION ${pc_dir})
endforeach()

install(FILES ${PROJECT_SOURCE_DIR}/data/NLS/SUPPLANG_R9 DESTINATION ${CMAKE_INSTALL_DATADIR}/QORSysTS/NLS)
