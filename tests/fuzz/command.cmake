# The readers of models and of CSV files, on any bytes.
find_package(tomlplusplus REQUIRED)
find_package(fmt REQUIRED)

foreach(reader IN ITEMS model csv)
    set(rooms base catalogue model checks)
    list(TRANSFORM rooms PREPEND ${PROJECT_SOURCE_DIR}/command/)
    list(TRANSFORM rooms APPEND /*.cpp OUTPUT_VARIABLE sources)
    file(GLOB sources ${sources})
    list(FILTER sources EXCLUDE REGEX "/(schema|types_json|sha256)[^/]*[.]cpp$")
    if(reader STREQUAL "csv")
        set(sources calendar csv_dialect csv_file date_reading diagnostics display files number_format platform_posix
            text_encoding)
        list(TRANSFORM sources PREPEND ${PROJECT_SOURCE_DIR}/command/base/)
        list(TRANSFORM sources APPEND .cpp)
    endif()
    add_executable(fuzz_${reader} command/${reader}_fuzzer.cpp ${sources})
    target_include_directories(fuzz_${reader} PRIVATE ${rooms})
    target_link_libraries(fuzz_${reader} PRIVATE kesto_options fmt::fmt tomlplusplus::tomlplusplus)
    target_compile_options(fuzz_${reader} PRIVATE ${KESTO_FUZZ_OPTIONS})
    target_link_options(fuzz_${reader} PRIVATE ${KESTO_FUZZ_OPTIONS})
    file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/${reader}_found)
    add_test(NAME fuzz/${reader}
        COMMAND fuzz_${reader} -seed=1 -runs=20000 -max_total_time=10 -timeout=20 -rss_limit_mb=2048 -verbosity=0
                ${CMAKE_CURRENT_BINARY_DIR}/${reader}_found ${CMAKE_CURRENT_SOURCE_DIR}/command/${reader}_corpus)
    set_tests_properties(fuzz/${reader} PROPERTIES ENVIRONMENT TZ=UTC)
endforeach()
