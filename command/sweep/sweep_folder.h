// The folder of a sweep: its results, and what it has done so far.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "design.h"
#include "folder_lock.h"
#include "journal.h"
#include "replaceable.h"
#include "sweep_files.h"

namespace kesto {

class SweepFolder {
  public:
    // Makes the folder unless it is there, and keeps other sweeps out of it for as long as this lives. `madeOf` is all
    // that the results depend on; what is there is gone on with when it is made of the same, and removed for a
    // `restart`. Throws FolderBusy, NotReplaceable, or std::runtime_error when nothing can be written. `inputs` are the
    // files that the sweep reads, `parts` the names of those that it writes beside its two tables.
    SweepFolder(const std::string& path, nlohmann::ordered_json madeOf, const Slice& slice,
                const std::vector<std::string>& inputs, const std::vector<std::string>& parts, bool restart);

    // What an earlier sweep has left when nothing is left to do: members.json; null: there is something.
    const nlohmann::ordered_json* finished() const { return finished_ ? &*finished_ : nullptr; }

    const nlohmann::ordered_json& madeOf() const { return madeOf_; }
    Journal& journal() { return *journal_; }
    bool hasPart(const std::string& name) const;

    // Where a file is written before it is moved into the folder.
    std::string aside(std::string_view name) const;
    WrittenFile fileAside(std::string_view name) const;
    void addPart(const std::string& name);  // one that stands aside

    // Moves the table, which stands aside, into the folder, and members.json after it.
    void finish(const nlohmann::ordered_json& members);

  private:
    // The hidden folder, locked; it goes when nothing else is in it.
    struct Hidden {
        explicit Hidden(const std::string& folder);
        ~Hidden();
        Hidden(const Hidden&) = delete;
        Hidden& operator=(const Hidden&) = delete;
        std::string path;
        std::unique_ptr<FileLock> lock;
    };
    std::string inHidden(std::string_view name) const;
    void readEarlier();
    void expectSame() const;
    void expectReplaceable(const std::vector<std::string>& names) const;
    void removeEarlier();
    void clearHidden() const;
    void takeUpParts();
    void announce(const std::string& name);
    void move(const std::string& name);
    bool isOurs(const std::string& name) const;
    [[noreturn]] void refuse(const nlohmann::ordered_json& other) const;

    std::string path_;
    nlohmann::ordered_json madeOf_;
    std::vector<std::string> inputs_;
    Hidden hidden_;
    std::optional<nlohmann::ordered_json> earlier_;  // what an earlier sweep is made of
    std::vector<WrittenFile> own_;  // files that this sweep or an earlier one has moved here, or is about to
    std::optional<nlohmann::ordered_json> finished_;
    std::unique_ptr<Journal> journal_;
};

// Checksums and options by which results are told apart; `files` are all that members read, the model file first.
nlohmann::ordered_json madeOf(const std::vector<std::string>& files, const Design& design,
                              const nlohmann::ordered_json& options, const Slice& slice);

}  // namespace kesto
