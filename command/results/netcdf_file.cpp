#include "netcdf_file.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <utility>

#include "netcdf_library.h"

namespace kesto {

namespace {

constexpr std::size_t kChunk = 1 << 16;  // values

// As many short rows as make a chunk: one row each would take twice the time, and compress no better.
std::size_t rowsOfChunk(std::size_t rows, std::size_t length) {
    return std::clamp<std::size_t>(kChunk / std::max<std::size_t>(length, 1), 1, std::max<std::size_t>(rows, 1));
}

}  // namespace

NetcdfFile::NetcdfFile(const std::string& path, int compression) : path_(path), compression_(compression) {
    check(netcdf().create(path.c_str(), NC_NETCDF4 | NC_CLOBBER, &file_));
}

NetcdfFile::~NetcdfFile() {
    if (file_ >= 0) netcdf().close(file_);
}

void NetcdfFile::check(int status) const {
    if (status != NC_NOERR)
        throw std::runtime_error(fmt::format("cannot write {}: {}", path_, netcdf().strerror(status)));
}

// Of length 0 is what the library calls unlimited: one that may grow, and here stays empty.
NetcdfFile::Id NetcdfFile::dimension(const std::string& name, std::size_t length) {
    Id id = -1;
    check(netcdf().def_dim(file_, name.c_str(), length, &id));
    return id;
}

NetcdfFile::Id NetcdfFile::floats(const std::string& name, Id rows, Id columns, std::size_t length, float missing) {
    Id id = -1;
    const Id dimensions[] = {rows, columns};
    check(netcdf().def_var(file_, name.c_str(), NC_FLOAT, 2, dimensions, &id));
    std::size_t count = 0;
    check(netcdf().inq_dimlen(file_, rows, &count));
    const std::size_t chunk[] = {rowsOfChunk(count, length), std::max<std::size_t>(length, 1)};
    check(netcdf().def_var_chunking(file_, id, NC_CHUNKED, chunk));
    // Amounts repeat, from day to day and from household to household: bytes of whole numbers match better than
    // shuffled.
    if (compression_ > 0) check(netcdf().def_var_deflate(file_, id, NC_NOSHUFFLE, 1, compression_));
    check(netcdf().def_var_fill(file_, id, NC_FILL, &missing));
    tables_.push_back({id, name, missing, count, length, {}});
    return id;
}

NetcdfFile::Id NetcdfFile::cube(const std::string& name, const std::array<Id, 3>& dimensions, const Three& chunk,
                                float fill) {
    Id id = -1;
    check(netcdf().def_var(file_, name.c_str(), NC_FLOAT, 3, dimensions.data(), &id));
    check(netcdf().def_var_chunking(file_, id, NC_CHUNKED, chunk.data()));
    if (compression_ > 0) check(netcdf().def_var_deflate(file_, id, 1, 1, compression_));
    check(netcdf().def_var_fill(file_, id, NC_FILL, &fill));
    return id;
}

NetcdfFile::Id NetcdfFile::doubles(const std::string& name, Id dimension) {
    Id id = -1;
    check(netcdf().def_var(file_, name.c_str(), NC_DOUBLE, 1, &dimension, &id));
    return id;
}

NetcdfFile::Id NetcdfFile::integers(const std::string& name, Id dimension) {
    Id id = -1;
    check(netcdf().def_var(file_, name.c_str(), NC_INT, 1, &dimension, &id));
    return id;
}

NetcdfFile::Id NetcdfFile::texts(const std::string& name, Id dimension, const std::vector<std::string>& values) {
    std::size_t length = 1;
    for (const std::string& value : values) {
        length = std::max(length, value.size());
    }
    const auto known = characters_.find(length);
    const Id characters =
        known != characters_.end() ? known->second : this->dimension(fmt::format("characters_{}", length), length);
    characters_[length] = characters;
    Id id = -1;
    const Id dimensions[] = {dimension, characters};
    check(netcdf().def_var(file_, name.c_str(), NC_CHAR, 2, dimensions, &id));
    attribute(id, "_Encoding", "utf-8");
    std::string rows(values.size() * length, '\0');
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i].copy(&rows[i * length], length);
    }
    if (!rows.empty()) check(netcdf().put_var_text(file_, id, rows.data()));
    return id;
}

void NetcdfFile::attribute(Id variable, const std::string& name, std::string_view text) {
    check(netcdf().put_att_text(file_, variable == kGlobal ? NC_GLOBAL : variable, name.c_str(), text.size(),
                                text.data()));
}

void NetcdfFile::attribute(Id variable, const std::string& name, int value) {
    check(netcdf().put_att_int(file_, variable == kGlobal ? NC_GLOBAL : variable, name.c_str(), NC_INT, 1, &value));
}

void NetcdfFile::writeRows(Id variable, FillRow fill) {
    const auto isOf = [&](const Table& table) { return table.variable == variable; };
    std::find_if(tables_.begin(), tables_.end(), isOf)->fill = std::move(fill);
}

void NetcdfFile::writeBlock(Id variable, const Three& start, const Three& count, const float* values) {
    check(netcdf().put_vara_float(file_, variable, start.data(), count.data(), values));
}

void NetcdfFile::write(Id variable, const std::vector<double>& values) {
    if (!values.empty()) check(netcdf().put_var_double(file_, variable, values.data()));
}

void NetcdfFile::write(Id variable, const std::vector<int>& values) {
    if (!values.empty()) check(netcdf().put_var_int(file_, variable, values.data()));
}

void NetcdfFile::close() {
    const int file = std::exchange(file_, -1);
    check(netcdf().close(file));
    if (!tables_.empty()) writeChunks();
}

void NetcdfFile::writeChunks() {
    const auto checkChunks = [&](bool isGood) { check(isGood ? NC_NOERR : NC_EHDFERR); };
    const auto close = [](ChunkFile* file) { netcdf().close_chunks(file); };
    std::unique_ptr<ChunkFile, decltype(close)> file(netcdf().open_chunks(path_.c_str(), compression_), close);
    checkChunks(file != nullptr);
    std::vector<float> values;
    for (const Table& table : tables_) {
        if (table.length == 0) continue;
        const std::size_t together = rowsOfChunk(table.rows, table.length);
        for (std::size_t first = 0; first < table.rows; first += together) {
            values.assign(together * table.length, table.missing);
            bool isEmpty = true;
            for (std::size_t i = 0; i < std::min(together, table.rows - first); ++i) {
                if (table.fill(first + i, &values[i * table.length])) isEmpty = false;
            }
            if (!isEmpty) {
                checkChunks(netcdf().write_chunk(file.get(), table.name.c_str(), first, values.data(), values.size()));
            }
        }
    }
    checkChunks(netcdf().close_chunks(file.release()));
}

}  // namespace kesto
