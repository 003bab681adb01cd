#include "journal.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "files.h"
#include "platform.h"

namespace kesto {

namespace {

using Json = nlohmann::ordered_json;

// What a line tells of, its first character.
constexpr char kColumns = 'c', kMember = 'm', kPart = 'p';
constexpr std::size_t kBeforeValues = 6;  // fields of a member's line before its figures

[[noreturn]] void fail(const std::string& path, const std::error_code& error) {
    throw std::runtime_error(fmt::format("cannot write {}: {}", path, reasonOf(error)));
}

std::vector<std::string_view> fieldsOf(std::string_view line) {
    std::vector<std::string_view> fields;
    for (std::size_t begin = 0; begin <= line.size();) {
        const std::size_t end = std::min(line.find('\t', begin), line.size());
        fields.push_back(line.substr(begin, end - begin));
        begin = end + 1;
    }
    return fields;
}

std::size_t numberIn(std::string_view text) {
    std::size_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

// On one line, whatever it holds.
std::string quoted(const std::string& text) {
    return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string toLine(const MemberColumns& columns) {
    Json all = Json::array();
    for (const MemberColumn& column : columns.all) {
        all.push_back({column.name, column.unit});
    }
    return fmt::format("{}\t{}\t{}\n", kColumns, columns.key, all.dump(-1, ' ', false, Json::error_handler_t::replace));
}

}  // namespace

Journal::Journal(const std::string& path, const std::string& madeOf, std::size_t first, std::size_t last)
    : path_(path), first_(first), lines_(last - first + 1) {
    const bool goesOn = takeUp(madeOf);
    file_.reset(openFile(path, goesOn ? "r+b" : "wb"));
    if (!file_) fail(path, lastError());
    if (goesOn) {
        // Behind the last whole line; what a killed process has left of another is written over.
        std::filesystem::resize_file(pathOf(path), end_);
        std::fseek(file_.get(), 0, SEEK_END);
    } else {
        append(madeOf + "\n");
    }
}

std::optional<std::string> Journal::madeOf(const std::string& path) {
    std::ifstream file(pathOf(path), std::ios::binary);
    std::string line;
    if (!std::getline(file, line) || file.eof()) return std::nullopt;
    return line;
}

// False where the file is none that the sweep can go on with.
bool Journal::takeUp(const std::string& madeOf) {
    std::ifstream file(pathOf(path_), std::ios::binary);
    std::string line;
    if (!std::getline(file, line) || file.eof() || line != madeOf) return false;
    end_ = line.size() + 1;
    for (std::size_t number = 2; std::getline(file, line) && !file.eof(); ++number) {
        if (!take(line, end_)) {
            throw std::runtime_error(
                fmt::format("cannot read {}: line {} is broken; remove the folder, or choose another", path_, number));
        }
        end_ += line.size() + 1;
    }
    return true;
}

// False where the line is none that add() or addPart() has written.
bool Journal::take(std::string_view line, std::uint64_t begin) {
    const std::vector<std::string_view> fields = fieldsOf(line);
    if (line.starts_with(kColumns)) return takeColumns(fields);
    if (line.starts_with(kPart)) {
        if (fields.size() != 4) return false;
        parts_.push_back({std::string(fields[1]), numberIn(fields[2]), std::string(fields[3])});
        return true;
    }
    const bool isMember = line.starts_with(kMember) && fields.size() >= kBeforeValues && Json::accept(fields[4]) &&
                          (fields[5].empty() || Json::accept(fields[5]));
    const std::size_t columns = isMember ? numberIn(fields[2]) : 0;
    if (!isMember || columns >= columns_.size()) return false;
    if (fields.size() != kBeforeValues + columns_[columns].all.size()) return false;
    const std::size_t member = numberIn(fields[1]);
    if (member < first_ || member - first_ >= lines_.size()) return true;  // of another slice
    lines_[member - first_] = {begin, static_cast<std::uint32_t>(line.size()), static_cast<std::uint32_t>(columns)};
    return true;
}

bool Journal::takeColumns(const std::vector<std::string_view>& fields) {
    if (fields.size() != 3) return false;
    MemberColumns columns;
    columns.key = numberIn(fields[1]);
    try {
        for (const Json& column : Json::parse(fields[2])) {
            columns.all.push_back({column.at(0), column.at(1)});
        }
    } catch (const Json::exception&) {
        return false;
    }
    columns_.push_back(std::move(columns));
    return true;
}

void Journal::append(const std::string& line) {
    if (std::fwrite(line.data(), 1, line.size(), file_.get()) != line.size() || std::fflush(file_.get()) != 0) {
        fail(path_, lastError());
    }
    end_ += line.size();
}

void Journal::add(std::size_t member, const MemberResult& result) {
    auto known = std::find(columns_.begin(), columns_.end(), result.columns);
    if (known == columns_.end()) {
        append(toLine(result.columns));
        known = columns_.insert(columns_.end(), result.columns);
    }
    const auto columns = static_cast<std::uint32_t>(known - columns_.begin());
    std::string line = fmt::format("{}\t{}\t{}\t{}\t{}\t{}", kMember, member, columns, toText(result.outcome),
                                   quoted(result.message), result.findings);
    for (const double value : result.values) {
        line += '\t';
        if (!std::isnan(value)) fmt::format_to(std::back_inserter(line), "{}", value);
    }
    lines_[member - first_] = {end_, static_cast<std::uint32_t>(line.size()), columns};
    append(line + '\n');
}

void Journal::addPart(const WrittenFile& part) {
    append(fmt::format("{}\t{}\t{}\t{}\n", kPart, part.name, part.bytes, part.checksum));
    parts_.push_back(part);
}

const WrittenFile* Journal::part(const std::string& name) const {
    const auto found =
        std::find_if(parts_.rbegin(), parts_.rend(), [&](const WrittenFile& part) { return part.name == name; });
    return found == parts_.rend() ? nullptr : &*found;
}

Journal::Row Journal::read(std::size_t member) const {
    const Line& at = lines_[member - first_];
    std::string line(at.length, ' ');
    if (!reader_.is_open()) reader_.open(pathOf(path_), std::ios::binary);
    reader_.seekg(static_cast<std::streamoff>(at.begin));
    if (!reader_.read(line.data(), at.length)) throw std::runtime_error(fmt::format("cannot read {}", path_));
    const std::vector<std::string_view> fields = fieldsOf(line);
    Row row{std::string(fields.at(3)), Json::parse(fields.at(4)), std::string(fields.at(5)), {}, at.columns};
    row.values.assign(fields.begin() + kBeforeValues, fields.end());
    return row;
}

}  // namespace kesto
