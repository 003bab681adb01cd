include(${CMAKE_CURRENT_LIST_DIR}/headers.cmake)
add_headers(netCDF::netcdf HEADERS netcdf.h)
set(netCDF_FOUND TRUE)
