// The NetCDF library, loaded when a NetCDF file is read or written: it brings some forty libraries, which take three
// quarters of the time in which the command starts.
#pragma once

#include <netcdf.h>

#include "module/chunk_file.h"

namespace kesto {

// What is used of it; kesto_netcdf.so, a library of ours beside the command, is linked with NetCDF and fills the table.
struct NetcdfLibrary {
    decltype(&nc_strerror) strerror;
    decltype(&nc_open) open;
    decltype(&nc_create) create;
    decltype(&nc_close) close;
    decltype(&nc_inq_varid) inq_varid;
    decltype(&nc_inq_varndims) inq_varndims;
    decltype(&nc_inq_vardimid) inq_vardimid;
    decltype(&nc_inq_dimlen) inq_dimlen;
    decltype(&nc_inq_var_fill) inq_var_fill;
    decltype(&nc_inq_natts) inq_natts;
    decltype(&nc_inq_attname) inq_attname;
    decltype(&nc_inq_att) inq_att;
    decltype(&nc_inq_attlen) inq_attlen;
    decltype(&nc_get_var_text) get_var_text;
    decltype(&nc_get_var_int) get_var_int;
    decltype(&nc_get_vara_float) get_vara_float;
    decltype(&nc_get_att_text) get_att_text;
    decltype(&nc_def_dim) def_dim;
    decltype(&nc_def_var) def_var;
    decltype(&nc_def_var_chunking) def_var_chunking;
    decltype(&nc_def_var_deflate) def_var_deflate;
    decltype(&nc_def_var_fill) def_var_fill;
    decltype(&nc_put_att_text) put_att_text;
    decltype(&nc_put_att_int) put_att_int;
    decltype(&nc_put_var_text) put_var_text;
    decltype(&nc_put_var_int) put_var_int;
    decltype(&nc_put_var_double) put_var_double;
    decltype(&nc_put_vara_float) put_vara_float;
    decltype(&openChunks) open_chunks;
    decltype(&writeChunk) write_chunk;
    decltype(&closeChunks) close_chunks;
};

#ifdef KESTO_MODULES
inline constexpr bool kHasNetcdf = true;
#else
inline constexpr bool kHasNetcdf = false;  // only its header was there
#endif

// Throws std::runtime_error when it cannot be loaded.
const NetcdfLibrary& netcdf();

}  // namespace kesto
