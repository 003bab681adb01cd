// JSON files that others may have changed, or cut short.
#pragma once

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>

namespace kesto {

// "key 'columns' not found"
std::string reasonOf(const nlohmann::json::exception& error);

// "cannot read out/members.json: it is not what "kesto sweep" writes: key 'columns' not found"
[[noreturn]] void failReading(const std::string& path, std::string_view writer, const std::string& reason);

// What `read` returns, which reads from a file that `writer` has written. Where it misses something there, or finds
// something else, throws std::runtime_error that names the file.
template <class Read>
auto readingJson(const std::string& path, std::string_view writer, const Read& read) {
    try {
        return read();
    } catch (const nlohmann::json::exception& error) {
        failReading(path, writer, reasonOf(error));
    }
}

}  // namespace kesto
