#include "json_reading.h"

#include <fmt/format.h>

#include <algorithm>

namespace kesto {

std::string reasonOf(const nlohmann::json::exception& error) {
    constexpr int kNoObject = 304;  // or list: "cannot use at() with null"
    const std::string text = error.what();
    if (error.id == kNoObject) return "expected keys or a list, found " + text.substr(text.rfind(' ') + 1);
    // "[json.exception.out_of_range.403] key 'columns' not found"
    const std::size_t begin = text.find("] ");
    return begin == std::string::npos ? text : text.substr(begin + 2);
}

void failReading(const std::string& path, std::string_view writer, const std::string& reason) {
    throw std::runtime_error(fmt::format("cannot read {}: it is not what \"{}\" writes: {}", path, writer, reason));
}

}  // namespace kesto
