#include "chunk_file.h"

#include <hdf5.h>
#include <libdeflate.h>

#include <memory>
#include <string>
#include <vector>

namespace kesto {

namespace {

struct FreeCompressor {
    void operator()(libdeflate_compressor* compressor) const { libdeflate_free_compressor(compressor); }
};

}  // namespace

struct ChunkFile {
    hid_t file, dataset = H5I_INVALID_HID;
    std::string variable;  // of the dataset
    std::unique_ptr<libdeflate_compressor, FreeCompressor> compressor;
    std::vector<unsigned char> compressed;

    bool closeDataset() {
        const hid_t last = dataset;
        dataset = H5I_INVALID_HID;
        return last < 0 || H5Dclose(last) >= 0;
    }

    bool openDataset(const char* name) {
        if (dataset >= 0 && variable == name) return true;
        if (!closeDataset()) return false;
        variable = name;
        dataset = H5Dopen2(file, name, H5P_DEFAULT);
        return dataset >= 0;
    }
};

ChunkFile* openChunks(const char* path, int compression) {
    const hid_t file = H5Fopen(path, H5F_ACC_RDWR, H5P_DEFAULT);
    if (file < 0) return nullptr;
    auto chunks = std::make_unique<ChunkFile>();
    chunks->file = file;
    if (compression > 0) chunks->compressor.reset(libdeflate_alloc_compressor(compression));
    return chunks.release();
}

bool writeChunk(ChunkFile* file, const char* variable, std::size_t row, const float* values, std::size_t count) {
    if (!file->openDataset(variable)) return false;
    const void* bytes = values;
    std::size_t size = count * sizeof(float);
    if (libdeflate_compressor* const compressor = file->compressor.get()) {
        file->compressed.resize(libdeflate_zlib_compress_bound(compressor, size));
        size = libdeflate_zlib_compress(compressor, values, size, file->compressed.data(), file->compressed.size());
        bytes = file->compressed.data();
    }
    const hsize_t offset[] = {row, 0};
    return H5Dwrite_chunk(file->dataset, H5P_DEFAULT, 0, offset, size, bytes) >= 0;
}

bool closeChunks(ChunkFile* file) {
    const std::unique_ptr<ChunkFile> chunks(file);
    const bool isClosed = chunks->closeDataset();
    return H5Fclose(chunks->file) >= 0 && isClosed;
}

}  // namespace kesto
