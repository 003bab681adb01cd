// A NetCDF file that is being read: the few things that a page of results needs of it.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace kesto {

class NetcdfReader {
  public:
    // All calls throw std::runtime_error, with the file's path and the library's reason.
    explicit NetcdfReader(const std::string& path);
    ~NetcdfReader();
    NetcdfReader(const NetcdfReader&) = delete;
    NetcdfReader& operator=(const NetcdfReader&) = delete;

    bool has(const std::string& variable) const;
    std::vector<std::string> texts(const std::string& variable) const;
    std::vector<int> integers(const std::string& variable) const;

    // A row of a variable with two dimensions; empty where the row has never been written.
    std::vector<float> row(const std::string& variable, std::size_t row) const;

    // Of a variable with three dimensions, with what it holds where nothing has been written.
    using Three = std::array<std::size_t, 3>;
    std::vector<float> block(const std::string& variable, const Three& start, const Three& count) const;

    // Global ones, texts alone, in the order in which they were written.
    std::vector<std::pair<std::string, std::string>> textAttributes() const;
    std::string textAttribute(const std::string& variable, const std::string& name) const;

  private:
    void check(int status) const;
    void expectRoom(std::size_t items, std::size_t bytes) const;
    std::string textOf(int variable, const std::string& attribute, std::size_t length) const;
    int idOf(const std::string& variable) const;
    std::vector<std::size_t> shapeOf(int variable) const;

    std::string path_;
    std::size_t bytes_ = 0;  // of the file
    int file_ = -1;
};

}  // namespace kesto
