# Takes the companion library from -DQORSYSMT_ROOT=<prefix>: its headers under include/ or include/QORSysTS/,
# its libraries under lib/ or the platform's library directory.
find_path(QORSYSMT_INCLUDE_DIR QORMutex.h HINTS ${QORSYSMT_ROOT}
          PATH_SUFFIXES include/QORSysTS include NO_DEFAULT_PATH REQUIRED)
find_library(QORSYSMT_LIBRARY NAMES libQORSysMultiThreading.so HINTS ${QORSYSMT_ROOT}
             PATH_SUFFIXES ${CMAKE_INSTALL_LIBDIR} lib NO_DEFAULT_PATH REQUIRED)

# The imported target bears the name under which an installed package knows it, so that what is exported refers to it
# by that name; the short names are the ones that the tree uses.
add_library(QORSysTS::QORSysMultiThreading SHARED IMPORTED GLOBAL)
set_target_properties(QORSysTS::QORSysMultiThreading PROPERTIES
  IMPORTED_LOCATION ${QORSYSMT_LIBRARY}
  INTERFACE_INCLUDE_DIRECTORIES ${QORSYSMT_INCLUDE_DIR}
  INTERFACE_LINK_LIBRARIES Threads::Threads)
add_library(QORSysMultiThreading ALIAS QORSysTS::QORSysMultiThreading)
add_library(QORSysMultiThreading_static ALIAS QORSysTS::QORSysMultiThreading)
