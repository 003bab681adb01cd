// The chunks of a NetCDF-4 file that NetCDF has described and closed, written past it as HDF5: compressed by
// libdeflate, which takes two thirds of the time of the zlib that HDF5 would use and makes smaller files.
#pragma once

#include <cstddef>

namespace kesto {

struct ChunkFile;

// Null when the file cannot be opened. `compression` is 0, none, to 9, as in the description.
ChunkFile* openChunks(const char* path, int compression);

// The chunk of a variable of two dimensions that begins with this row, whole: `count` values. Chunks of a variable
// follow one another.
bool writeChunk(ChunkFile* file, const char* variable, std::size_t row, const float* values, std::size_t count);

// False when something could not be written.
bool closeChunks(ChunkFile* file);

}  // namespace kesto
