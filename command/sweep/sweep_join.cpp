#include "sweep_join.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>

#include "csv_file.h"
#include "files.h"
#include "json_reading.h"
#include "number_format.h"
#include "sweep_csv.h"
#include "sweep_folder.h"
#include "sweep_part_reader.h"
#include "sweep_summary.h"

namespace kesto {

namespace {

using Json = nlohmann::ordered_json;

// The results of one slice, which are as they were written.
struct SliceResults {
    std::string folder;
    Json made;  // what it is made of
    Slice slice;
    std::size_t all;  // members of the whole design
    SweepSubject subject;
    std::vector<std::string> keys;
    MemberColumns columns;
    Findings findings;
    std::vector<WrittenFile> files;
};

MemberColumns columnsIn(const Json& rows) {
    MemberColumns columns;
    for (const Json& column : rows) {
        columns.all.push_back({column.at("name"), column.at("unit")});
        if (column.at("key")) ++columns.key;
    }
    return columns;
}

SliceResults sliceIn(const Json& members, const std::string& folder) {
    const Json& made = members.at("made_of");
    const Json& ends = made.at("members");
    SliceResults results{.folder = folder,
                         .made = made,
                         .slice = {ends.at(0), ends.at(1)},
                         .all = made.at("design").at("members"),
                         .subject = {members.at("model"), members.at("title"), members.at("design_table"),
                                     members.value("key_units", std::vector<std::string>{})},
                         .keys = members.at("keys"),
                         .columns = columnsIn(members.at("columns")),
                         .findings = Findings(members.at("design_table").get<std::string>()),
                         .files = filesIn(members.at("files"))};
    results.findings.add(members.at("warnings"));
    return results;
}

SliceResults readSlice(const std::string& folder) {
    const std::string path = joined(folder, kMembersFile);
    SliceResults results =
        readingJson(path, "kesto sweep", [&] { return sliceIn(Json::parse(readFile(path, kLargestSummary)), folder); });
    for (const WrittenFile& file : results.files) {
        if (!isUnchanged(folder, file)) {
            throw std::runtime_error(fmt::format("{} is not as the sweep has written it", joined(folder, file.name)));
        }
    }
    return results;
}

// Of all slices of one sweep the same.
Json withoutMembers(const SliceResults& slice) {
    Json made = slice.made;
    made.erase("members");
    return made;
}

// In order, each member once.
std::vector<SliceResults> readSlices(const std::vector<std::string>& folders) {
    std::vector<SliceResults> slices;
    for (const std::string& folder : folders) {
        slices.push_back(readSlice(folder));
        if (withoutMembers(slices.back()) == withoutMembers(slices.front())) continue;
        throw std::runtime_error(
            fmt::format("{} and {} are of different sweeps: model, series, design, options or "
                        "version differ",
                        folders.front(), folder));
    }
    std::sort(slices.begin(), slices.end(),
              [](const SliceResults& a, const SliceResults& b) { return a.slice.first < b.slice.first; });
    const std::size_t all = slices.front().all;
    std::size_t next = 1;
    for (const SliceResults& one : slices) {
        if (one.slice.first > next) break;
        if (one.slice.first < next) {
            throw std::runtime_error(
                fmt::format("member {} stands in {} and in another folder", one.slice.first, one.folder));
        }
        next = one.slice.last + 1;
    }
    if (next <= all) throw std::runtime_error(fmt::format("member {} of {} is in none of the folders", next, all));
    return slices;
}

// The table of a slice, whose rows go into the journal of the whole.
class SliceTable {
  public:
    explicit SliceTable(const SliceResults& slice) : keys_(slice.keys.size()), columns_(slice.columns) {
        Diagnostics diagnostics;
        const std::string path = joined(slice.folder, kMembersTable);
        csv_ = CsvFile::parse(readFile(path, kLargestTable), path, diagnostics);
        if (!csv_ || !csv_->isWhole() || csv_->rows() != slice.slice.size() ||
            csv_->columns().size() != keys_ + 3 + columns_.all.size()) {
            throw std::runtime_error(fmt::format("{} does not have the rows of its sweep", path));
        }
    }

    std::vector<std::string> cells(std::size_t row) const {
        std::vector<std::string> cells;
        for (std::size_t key = 0; key < keys_; ++key) {
            cells.emplace_back(csv_->cell(row, 1 + key));
        }
        return cells;
    }

    MemberResult result(std::size_t row) const {
        MemberResult result;
        result.message = csv_->cell(row, keys_ + 2);
        for (const Outcome outcome : {Outcome::finished, Outcome::failed}) {
            if (csv_->cell(row, keys_ + 1) == toText(outcome)) result.outcome = outcome;
        }
        result.columns = columns_;
        for (std::size_t i = 0; i < columns_.all.size(); ++i) {
            result.values.push_back(parseNumber(csv_->cell(row, keys_ + 3 + i)).value_or(std::nan("")));
        }
        return result;
    }

  private:
    std::size_t keys_;
    MemberColumns columns_;
    std::optional<CsvFile> csv_;
};

// Parts by name, each with the slices that hold members of it.
std::map<std::string, std::vector<const SliceResults*>> partsOf(const std::vector<SliceResults>& slices) {
    std::map<std::string, std::vector<const SliceResults*>> parts;
    for (const SliceResults& slice : slices) {
        for (const WrittenFile& file : slice.files) {
            if (file.name != kMembersTable) parts[file.name].push_back(&slice);
        }
    }
    return parts;
}

void joinPart(const std::string& name, const std::vector<const SliceResults*>& slices, SweepFolder& folder) {
    if (name.ends_with(".csv")) {
        std::vector<std::string> paths;
        for (const SliceResults* slice : slices) {
            paths.push_back(joined(slice->folder, name));
        }
        joinSweepCsv(paths, folder.aside(name));
        folder.addPart(name);
        return;
    }
    std::vector<std::unique_ptr<SweepPartReader>> readers;
    std::size_t count = 0;
    for (const SliceResults* slice : slices) {
        readers.push_back(std::make_unique<SweepPartReader>(joined(slice->folder, name)));
        const SweepPartReader& first = *readers.front();
        if (readers.back()->shape() != first.shape() || readers.back()->first() != first.first() + count) {
            throw std::runtime_error(fmt::format("cannot read {}: its members, days or flows do not follow those of {}",
                                                 joined(slice->folder, name), joined(slices.front()->folder, name)));
        }
        count += readers.back()->count();
    }
    SweepPart part(readers.front()->shape(), readers.front()->first(), count);
    for (const auto& reader : readers) {
        for (std::size_t member = reader->first(); member < reader->first() + reader->count(); ++member) {
            part.set(member, reader->member(member));
        }
    }
    part.write(folder.aside(name), readers.front()->attributes());
    folder.addPart(name);
}

// All that a join reads.
std::vector<std::string> filesOf(const std::vector<SliceResults>& slices) {
    std::vector<std::string> files;
    for (const SliceResults& slice : slices) {
        files.push_back(joined(slice.folder, kMembersFile));
        for (const WrittenFile& file : slice.files) {
            files.push_back(joined(slice.folder, file.name));
        }
    }
    return files;
}

// Puts the rows of all slices into the journal, and writes them as one table.
SweepSummary joinTables(const std::vector<SliceResults>& slices, const std::vector<SliceTable>& tables,
                        const Slice& whole, SweepFolder& folder) {
    for (std::size_t i = 0; i < slices.size(); ++i) {
        for (std::size_t row = 0; row < slices[i].slice.size(); ++row) {
            folder.journal().add(slices[i].slice.first + row, tables[i].result(row));
        }
    }
    const auto cellsOf = [&](std::size_t member) {
        std::size_t slice = slices.size() - 1;
        while (slices[slice].slice.first > member)
            --slice;
        return tables[slice].cells(member - slices[slice].slice.first);
    };
    return writeMembersTable(folder.aside(kMembersTable), {slices.front().keys, cellsOf}, whole, folder.journal());
}

}  // namespace

Json joinSlices(const std::vector<std::string>& folders, const std::string& output, bool restart) {
    const std::vector<SliceResults> slices = readSlices(folders);
    const SliceResults& first = slices.front();
    const std::vector<SliceTable> tables(slices.begin(), slices.end());
    const Slice whole{1, first.all};
    Json made = first.made;
    made["members"] = {whole.first, whole.last};
    const auto parts = partsOf(slices);
    std::vector<std::string> names;
    for (const auto& [name, of] : parts) {
        names.push_back(name);
    }
    SweepFolder folder(output, made, whole, filesOf(slices), names, restart);
    if (folder.finished()) return *folder.finished();

    for (const auto& [name, of] : parts) {
        if (!folder.hasPart(name)) joinPart(name, of, folder);
    }
    const SweepSummary summary = joinTables(slices, tables, whole, folder);
    Findings findings(first.subject.designTable);
    for (const SliceResults& slice : slices) {
        findings.add(slice.findings.rows());
    }
    std::vector<WrittenFile> files{folder.fileAside(kMembersTable)};
    for (const std::string& name : names) {
        files.push_back(*folder.journal().part(name));
    }
    folder.finish(membersJson(first.subject, made, summary, findings, files));
    return *folder.finished();
}

}  // namespace kesto
