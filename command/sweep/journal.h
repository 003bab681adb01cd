// What a sweep has done so far: a file to which each member adds a line when it has ended, and each part one when it
// has been written. A process that is killed leaves at most its last line unfinished.
#pragma once

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "member_result.h"
#include "written_files.h"

namespace kesto {

class Journal {
  public:
    // Of members `first` to `last`. What the file holds counts when its first line is `madeOf`, else it begins anew.
    // Throws std::runtime_error.
    Journal(const std::string& path, const std::string& madeOf, std::size_t first, std::size_t last);

    // The first line of a journal; none where there is none.
    static std::optional<std::string> madeOf(const std::string& path);

    bool has(std::size_t member) const { return lines_[member - first_].length > 0; }
    void add(std::size_t member, const MemberResult& result);
    void forget(std::size_t member) { lines_[member - first_] = {}; }  // it is done again

    // Files that are or were about to be moved into the folder; of two with one name the last one counts.
    const std::vector<WrittenFile>& parts() const { return parts_; }
    const WrittenFile* part(const std::string& name) const;  // null: none
    void addPart(const WrittenFile& part);

    // What stood in the results of a member, its figures as text.
    struct Row {
        std::string outcome, message, findings;
        std::vector<std::string> values;  // empty: not a number
        std::size_t columns = 0;          // index
    };
    Row read(std::size_t member) const;
    std::size_t columnsOf(std::size_t member) const { return lines_[member - first_].columns; }
    const std::vector<MemberColumns>& columns() const { return columns_; }

  private:
    struct Line {
        std::uint64_t begin = 0;
        std::uint32_t length = 0;  // 0: the member is not done
        std::uint32_t columns = 0;
    };
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    bool takeUp(const std::string& madeOf);
    bool take(std::string_view line, std::uint64_t begin);
    bool takeColumns(const std::vector<std::string_view>& fields);
    void append(const std::string& line);

    std::string path_;
    std::size_t first_;
    std::vector<Line> lines_;  // by member
    std::vector<MemberColumns> columns_;
    std::vector<WrittenFile> parts_;
    std::uint64_t end_ = 0;
    std::unique_ptr<std::FILE, Close> file_;
    mutable std::ifstream reader_;
};

}  // namespace kesto
