include(${CMAKE_CURRENT_LIST_DIR}/headers.cmake)
add_headers(CLI11::CLI11 HEADERS CLI)
set(CLI11_FOUND TRUE)
