include(${CMAKE_CURRENT_LIST_DIR}/headers.cmake)
add_headers(fmt::fmt HEADERS fmt DEFINITIONS FMT_HEADER_ONLY)
set(fmt_FOUND TRUE)
