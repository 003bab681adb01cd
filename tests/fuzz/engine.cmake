get_target_property(sources kesto_engine SOURCES)
set(support guarded_memory.cpp host_record.cpp random_model.cpp random_tables.cpp)
list(TRANSFORM support PREPEND ${PROJECT_SOURCE_DIR}/tests/support/)
add_executable(fuzz_engine engine_fuzzer.cpp engine_record.cpp engine_bound.cpp ${sources} ${support})
target_include_directories(fuzz_engine PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/tests/support)
target_link_libraries(fuzz_engine PRIVATE kesto_options)
target_compile_options(fuzz_engine PRIVATE ${KESTO_FUZZ_OPTIONS})
target_link_options(fuzz_engine PRIVATE ${KESTO_FUZZ_OPTIONS} -Wl,--wrap=_Z9invariantbPKcS0_i)
# The sources stand in the list of compile commands once, as the library compiles them.
set_target_properties(fuzz_engine PROPERTIES EXPORT_COMPILE_COMMANDS OFF KESTO_SANITIZED ON)

# The corpus, and then some seconds of new records, the same ones each time.
set(found ${CMAKE_CURRENT_BINARY_DIR}/engine_found)
add_test(NAME fuzz/engine
    COMMAND sh -c "rm -rf $1 && mkdir $1 && shift && exec \"$@\"" sh ${found}
            $<TARGET_FILE:fuzz_engine> -seed=1 -runs=10000 -timeout=60 -rss_limit_mb=2048 -verbosity=0
            ${found} ${CMAKE_CURRENT_SOURCE_DIR}/engine_corpus)
set_tests_properties(fuzz/engine PROPERTIES ENVIRONMENT TZ=UTC)
