include(${CMAKE_CURRENT_LIST_DIR}/headers.cmake)
add_headers(xxHash::xxhash HEADERS xxhash.h xxh3.h)
set(xxHash_FOUND TRUE)
