#include "netcdf_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <stdexcept>

#include "files.h"
#include "netcdf_library.h"

namespace kesto {

namespace {

constexpr std::size_t kDensest = 1100;  // deflate packs 1032 bytes into one

}  // namespace

NetcdfReader::NetcdfReader(const std::string& path) : path_(path), bytes_(expectRegular(path)) {
    check(netcdf().open(path.c_str(), NC_NOWRITE, &file_));
}

NetcdfReader::~NetcdfReader() {
    if (file_ >= 0) netcdf().close(file_);
}

void NetcdfReader::check(int status) const {
    if (status != NC_NOERR)
        throw std::runtime_error(fmt::format("cannot read {}: {}", path_, netcdf().strerror(status)));
}

bool NetcdfReader::has(const std::string& variable) const {
    int id = -1;
    return netcdf().inq_varid(file_, variable.c_str(), &id) == NC_NOERR;
}

// A broken file may claim lengths for which there is no memory.
void NetcdfReader::expectRoom(std::size_t items, std::size_t bytes) const {
    if (bytes == 0 || items <= kDensest * bytes_ / bytes) return;
    throw std::runtime_error(fmt::format("cannot read {}: it claims {} values of {} bytes, more than its size can hold",
                                         path_, items, bytes));
}

int NetcdfReader::idOf(const std::string& variable) const {
    int id = -1;
    if (const int status = netcdf().inq_varid(file_, variable.c_str(), &id); status != NC_NOERR) {
        throw std::runtime_error(fmt::format("cannot read {} of {}: {}", variable, path_, netcdf().strerror(status)));
    }
    return id;
}

std::vector<std::size_t> NetcdfReader::shapeOf(int variable) const {
    int count = 0;
    check(netcdf().inq_varndims(file_, variable, &count));
    std::vector<int> dimensions(static_cast<std::size_t>(count));
    check(netcdf().inq_vardimid(file_, variable, dimensions.data()));
    std::vector<std::size_t> shape;
    for (const int dimension : dimensions) {
        shape.emplace_back();
        check(netcdf().inq_dimlen(file_, dimension, &shape.back()));
    }
    return shape;
}

std::vector<std::string> NetcdfReader::texts(const std::string& variable) const {
    const int id = idOf(variable);
    const std::vector<std::size_t> shape = shapeOf(id);
    if (shape.size() != 2) return {};
    expectRoom(shape[0], std::max<std::size_t>(shape[1], 1));
    std::string rows(shape[0] * shape[1], '\0');
    if (!rows.empty()) check(netcdf().get_var_text(file_, id, rows.data()));
    std::vector<std::string> result;
    for (std::size_t i = 0; i < shape[0]; ++i) {
        const std::string row = rows.substr(i * shape[1], shape[1]);
        result.push_back(row.substr(0, row.find('\0')));
    }
    return result;
}

std::vector<int> NetcdfReader::integers(const std::string& variable) const {
    const int id = idOf(variable);
    const std::vector<std::size_t> shape = shapeOf(id);
    if (shape.size() != 1 || shape[0] == 0) return {};
    expectRoom(shape[0], sizeof(int));
    std::vector<int> values(shape[0]);
    check(netcdf().get_var_int(file_, id, values.data()));
    return values;
}

std::vector<float> NetcdfReader::row(const std::string& variable, std::size_t row) const {
    const int id = idOf(variable);
    const std::vector<std::size_t> shape = shapeOf(id);
    if (shape.size() != 2 || row >= shape[0] || shape[1] == 0) return {};
    expectRoom(shape[1], sizeof(float));
    std::vector<float> values(shape[1]);
    const std::size_t start[] = {row, 0};
    const std::size_t count[] = {1, shape[1]};
    check(netcdf().get_vara_float(file_, id, start, count, values.data()));
    float fill = NC_FILL_FLOAT;
    check(netcdf().inq_var_fill(file_, id, nullptr, &fill));
    const bool isWritten = std::any_of(values.begin(), values.end(), [fill](float value) { return value != fill; });
    return isWritten ? values : std::vector<float>{};
}

std::vector<float> NetcdfReader::block(const std::string& variable, const Three& start, const Three& count) const {
    const int id = idOf(variable);
    const std::vector<std::size_t> shape = shapeOf(id);
    std::size_t items = 1;
    for (std::size_t i = 0; i < start.size(); ++i) {
        if (shape.size() != start.size() || start[i] > shape[i] || count[i] > shape[i] - start[i])
            throw std::runtime_error(
                fmt::format("cannot read {}: {} is not as large as it should be", path_, variable));
        items *= count[i];
    }
    std::vector<float> values(items);
    if (items > 0) check(netcdf().get_vara_float(file_, id, start.data(), count.data(), values.data()));
    return values;
}

std::string NetcdfReader::textOf(int variable, const std::string& attribute, std::size_t length) const {
    expectRoom(length, 1);
    std::string text(length, '\0');
    check(netcdf().get_att_text(file_, variable, attribute.c_str(), text.data()));
    return text;
}

std::vector<std::pair<std::string, std::string>> NetcdfReader::textAttributes() const {
    std::vector<std::pair<std::string, std::string>> attributes;
    int count = 0;
    check(netcdf().inq_natts(file_, &count));
    for (int i = 0; i < count; ++i) {
        char name[NC_MAX_NAME + 1];
        std::size_t length = 0;
        nc_type type = NC_NAT;
        check(netcdf().inq_attname(file_, NC_GLOBAL, i, name));
        check(netcdf().inq_att(file_, NC_GLOBAL, name, &type, &length));
        if (type == NC_CHAR) attributes.emplace_back(name, textOf(NC_GLOBAL, name, length));
    }
    return attributes;
}

std::string NetcdfReader::textAttribute(const std::string& variable, const std::string& name) const {
    const int id = idOf(variable);
    std::size_t length = 0;
    if (netcdf().inq_attlen(file_, id, name.c_str(), &length) != NC_NOERR) return {};
    return textOf(id, name, length);
}

}  // namespace kesto
