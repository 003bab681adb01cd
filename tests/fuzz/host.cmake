# The readers of models and of CSV files, on any bytes.
find_package(tomlplusplus REQUIRED)
find_package(fmt REQUIRED)

foreach(reader IN ITEMS model csv)
    file(GLOB sources ${PROJECT_SOURCE_DIR}/host/*.cpp)
    list(REMOVE_ITEM sources ${PROJECT_SOURCE_DIR}/host/main.cpp)
    list(FILTER sources EXCLUDE REGEX "(_command|/(netcdf|report|draw|schema|summary|types_json|results|balance|engine_run|record|shared_memory|sha256|progress_bar)[^/]*)[.]cpp$")
    if(reader STREQUAL "csv")
        set(sources ${PROJECT_SOURCE_DIR}/host/csv_file.cpp ${PROJECT_SOURCE_DIR}/host/calendar.cpp
            ${PROJECT_SOURCE_DIR}/host/diagnostics.cpp ${PROJECT_SOURCE_DIR}/host/files.cpp)
    endif()
    add_executable(fuzz_${reader} host/${reader}_fuzzer.cpp ${sources})
    target_include_directories(fuzz_${reader} PRIVATE ${PROJECT_SOURCE_DIR}/host ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(fuzz_${reader} PRIVATE kesto_options fmt::fmt tomlplusplus::tomlplusplus)
    target_compile_options(fuzz_${reader} PRIVATE ${KESTO_FUZZ_OPTIONS})
    target_link_options(fuzz_${reader} PRIVATE ${KESTO_FUZZ_OPTIONS})
    file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/${reader}_found)
    add_test(NAME fuzz/${reader}
        COMMAND fuzz_${reader} -seed=1 -runs=20000 -max_total_time=10 -timeout=20 -rss_limit_mb=2048 -verbosity=0
                ${CMAKE_CURRENT_BINARY_DIR}/${reader}_found ${CMAKE_CURRENT_SOURCE_DIR}/host/${reader}_corpus)
    set_tests_properties(fuzz/${reader} PROPERTIES ENVIRONMENT TZ=UTC)
endforeach()
