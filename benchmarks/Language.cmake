# Brings its own `main`: first uses are measured in processes of their own, which are this program executed again.
qor_add_benchmark(LanguageBenchmark SOURCES LanguageBenchmark.cpp LINK QORSysTS)
target_compile_definitions(LanguageBenchmark PRIVATE LANGUAGE_TABLE="${PROJECT_SOURCE_DIR}/data/NLS/SUPPLANG_R9")
