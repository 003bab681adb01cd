// A NetCDF-4 file that is being written: the few things that results need of it.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace kesto {

class NetcdfFile {
  public:
    using Id = int;  // of a dimension or a variable

    // Creates the file. All calls throw std::runtime_error, with the file's path and the library's reason.
    // `compression` of floats is 0, none, to 9.
    NetcdfFile(const std::string& path, int compression);
    ~NetcdfFile();
    NetcdfFile(const NetcdfFile&) = delete;
    NetcdfFile& operator=(const NetcdfFile&) = delete;

    Id dimension(const std::string& name, std::size_t length);

    // Variables of floats, in rows of `length`; `missing` is what rows hold that are not written.
    Id floats(const std::string& name, Id rows, Id columns, std::size_t length, float missing);

    // Of three dimensions, compressed by chunks of this shape.
    using Three = std::array<std::size_t, 3>;
    Id cube(const std::string& name, const std::array<Id, 3>& dimensions, const Three& chunk, float fill);

    Id doubles(const std::string& name, Id dimension);
    Id integers(const std::string& name, Id dimension);

    // Texts as rows of characters, filled up with zeros: strings of any length take four times as long.
    Id texts(const std::string& name, Id dimension, const std::vector<std::string>& values);

    static constexpr Id kGlobal = -1;
    void attribute(Id variable, const std::string& name, std::string_view text);
    void attribute(Id variable, const std::string& name, int value);

    void writeBlock(Id variable, const Three& start, const Three& count, const float* values);

    // What close() writes to a variable of floats. `fill` writes the values of a row and returns true, or returns false
    // for one that is missing and leaves the values alone. A chunk of missing rows takes no space.
    using FillRow = std::function<bool(std::size_t row, float* values)>;
    void writeRows(Id variable, FillRow fill);

    void write(Id variable, const std::vector<double>& values);
    void write(Id variable, const std::vector<int>& values);

    void close();

  private:
    struct Table {
        Id variable;
        std::string name;
        float missing;
        std::size_t rows, length;
        FillRow fill;
    };

    void check(int status) const;
    void writeChunks();
    std::string path_;
    int compression_;
    std::map<std::size_t, Id> characters_;  // dimensions by their lengths
    std::vector<Table> tables_;
    int file_ = -1;
};

}  // namespace kesto
