# Takes the same options as the others and gives the same report, but starts its own processes.
add_executable(LoadBenchmark LoadBenchmark.cpp)
target_compile_definitions(LoadBenchmark PRIVATE OUR_LIBRARY="$<TARGET_FILE:QORSysTS>")
target_link_libraries(LoadBenchmark PRIVATE ${CMAKE_DL_LIBS})
add_dependencies(LoadBenchmark QORSysTS)
