include(${CMAKE_CURRENT_LIST_DIR}/headers.cmake)
add_headers(tomlplusplus::tomlplusplus HEADERS toml++ DEFINITIONS TOML_HEADER_ONLY=1)
set(tomlplusplus_FOUND TRUE)
