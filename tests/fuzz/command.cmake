# What the command reads of somebody else, on any bytes: models, CSV files, and the results that a page is made of.
find_package(tomlplusplus REQUIRED)
find_package(fmt REQUIRED)
find_package(nlohmann_json REQUIRED)
find_package(netCDF REQUIRED)

set(rooms base catalogue model checks engine results report)
list(TRANSFORM rooms PREPEND ${PROJECT_SOURCE_DIR}/command/)
list(TRANSFORM rooms APPEND /*.cpp OUTPUT_VARIABLE sources)
file(GLOB sources CONFIGURE_DEPENDS ${sources})
list(FILTER sources EXCLUDE REGEX "_windows[.]cpp$")
add_library(fuzz_rooms STATIC EXCLUDE_FROM_ALL ${sources})
target_include_directories(fuzz_rooms PUBLIC ${rooms})
target_compile_options(fuzz_rooms PRIVATE ${KESTO_FUZZ_OPTIONS})
target_compile_definitions(fuzz_rooms PRIVATE KESTO_VERSION="${PROJECT_VERSION}")
target_link_libraries(fuzz_rooms PUBLIC KESTO kesto_options fmt::fmt PRIVATE tomlplusplus::tomlplusplus
    nlohmann_json::nlohmann_json kesto_checksums)
target_compile_definitions(fuzz_rooms PRIVATE $<TARGET_PROPERTY:command_results,COMPILE_DEFINITIONS>)
target_include_directories(fuzz_rooms SYSTEM PRIVATE $<TARGET_PROPERTY:netCDF::netcdf,INTERFACE_INCLUDE_DIRECTORIES>)
# The sources stand in the list of compile commands once, as the rooms compile them.
set_target_properties(fuzz_rooms PROPERTIES EXPORT_COMPILE_COMMANDS OFF KESTO_SANITIZED ON)

# A fifth of the time to compile; missing includes show in the rooms themselves.
target_precompile_headers(fuzz_rooms PRIVATE <algorithm> <functional> <map> <memory> <optional> <set> <string> <vector>
    <fmt/format.h> <nlohmann/json.hpp>)

# Of each target the corpus, and then some seconds of new inputs.
foreach(reader IN ITEMS model csv netcdf results)
    add_executable(fuzz_${reader} command/${reader}_fuzzer.cpp)
    set_target_properties(fuzz_${reader} PROPERTIES KESTO_SANITIZED ON)
    target_link_libraries(fuzz_${reader} PRIVATE fuzz_rooms)
    target_compile_options(fuzz_${reader} PRIVATE ${KESTO_FUZZ_OPTIONS})
    target_link_options(fuzz_${reader} PRIVATE ${KESTO_FUZZ_OPTIONS})
    file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/${reader}_found)
    add_test(NAME fuzz/${reader}
        COMMAND fuzz_${reader} -seed=1 -runs=20000 -max_total_time=10 -timeout=20 -rss_limit_mb=2048 -verbosity=0
                ${CMAKE_CURRENT_BINARY_DIR}/${reader}_found ${CMAKE_CURRENT_SOURCE_DIR}/command/${reader}_corpus)
    set_tests_properties(fuzz/${reader} PROPERTIES ENVIRONMENT TZ=UTC)
endforeach()
target_sources(fuzz_netcdf PRIVATE command/branch_counters.cpp)
set_source_files_properties(command/branch_counters.cpp PROPERTIES COMPILE_OPTIONS -fno-sanitize=fuzzer)
target_sources(fuzz_results PRIVATE $<TARGET_OBJECTS:command_report_page>)
target_link_libraries(fuzz_results PRIVATE nlohmann_json::nlohmann_json)
