#include "sweep_folder.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "files.h"
#include "platform.h"
#include "sha256.h"

namespace kesto {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr const char* kHiddenFolder = ".kesto-sweep";
constexpr const char* kJournal = "journal";

// "tank.size=3, roof.size=50" of what was given once or several times.
std::string listed(const Json& value) {
    std::string text;
    for (const Json& one : value.is_array() ? value : Json::array({value})) {
        text += (text.empty() ? "" : ", ") + (one.is_string() ? one.get<std::string>() : one.dump());
    }
    return text.empty() ? "not given" : text;
}

// Files that are there in one list and not, or with another checksum, in the other.
std::string changedInputs(const Json& mine, const Json& other) {
    std::vector<std::string> names;
    for (const Json* from : {&mine, &other}) {
        const Json& in = from == &mine ? other : mine;
        for (const Json& row : *from) {
            const auto name = row.at("file").get<std::string>();
            const bool isSame = std::find(in.begin(), in.end(), row) != in.end();
            if (!isSame && std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
        }
    }
    return listOf({names.begin(), names.end()}, "and") + (names.size() == 1 ? " has" : " have") + " changed";
}

std::string changedOptions(const Json& mine, const Json& other) {
    std::string text;
    for (const auto& [name, value] : mine.items()) {
        if (!other.contains(name) || other.at(name) == value) continue;
        text += fmt::format("{}--{} was {}, and is {}", text.empty() ? "" : ", ", name, listed(other.at(name)),
                            listed(value));
    }
    return text.empty() ? "its options differ" : text;
}

}  // namespace

Json madeOf(const std::vector<std::string>& files, const Design& design, const Json& options, const Slice& slice) {
    std::string folder = nameOf(pathOf(files.front()).parent_path());
    if (!folder.empty()) folder += '/';
    Json inputs = Json::array();
    for (const std::string& path : files) {
        const std::string name = path.substr(path.starts_with(folder) ? folder.size() : 0);
        inputs.push_back({{"file", name}, {"sha256", sha256OfFile(path)}});
    }
    return {{"kesto", KESTO_VERSION},
            {"inputs", inputs},
            {"design", {{"members", design.members()}, {"sha256", design.sha256()}}},
            {"options", options},
            {"members", {slice.first, slice.last}}};
}

SweepFolder::Hidden::Hidden(const std::string& folder) : path(joined(folder, kHiddenFolder)) {
    makeFolder(folder);
    lock = lockFolder(folder, kHiddenFolder);
}

SweepFolder::Hidden::~Hidden() {
    lock.reset();
    std::error_code ignored;
    fs::remove(pathOf(path), ignored);
}

SweepFolder::SweepFolder(const std::string& path, Json madeOf, const Slice& slice,
                         const std::vector<std::string>& inputs, const std::vector<std::string>& parts, bool restart)
    : path_(path), madeOf_(std::move(madeOf)), inputs_(inputs), hidden_(path) {
    readEarlier();
    if (!restart) expectSame();
    std::vector<std::string> names{std::string(kMembersTable), std::string(kMembersFile)};
    names.insert(names.end(), parts.begin(), parts.end());
    expectReplaceable(names);
    if (restart) removeEarlier();
    if (finished_) {
        clearHidden();
        return;
    }
    journal_ = std::make_unique<Journal>(inHidden(kJournal), madeOf_.dump(), slice.first, slice.last);
    takeUpParts();
}

std::string SweepFolder::inHidden(std::string_view name) const {
    return joined(hidden_.path, name);
}

std::string SweepFolder::aside(std::string_view name) const {
    return inHidden(name);
}

WrittenFile SweepFolder::fileAside(std::string_view name) const {
    return fileAt(hidden_.path, std::string(name));
}

// What an earlier sweep has left, finished or not.
void SweepFolder::readEarlier() {
    const std::string path = joined(path_, kMembersFile);
    if (fs::symlink_status(pathOf(path)).type() == fs::file_type::regular) {
        const std::string text = readFile(path, kLargestSummary);
        try {
            const Json json = Json::parse(text);
            own_ = filesIn(json.at("files"));
            earlier_ = json.at("made_of");
            own_.push_back(fileAt(path_, std::string(kMembersFile)));
            const bool isWhole = std::all_of(own_.begin(), own_.end(),
                                             [&](const WrittenFile& file) { return isUnchanged(path_, file); });
            if (earlier_ == madeOf_ && isWhole) finished_ = json;
        } catch (const nlohmann::json::exception&) {
            own_.clear();  // a file of somebody else
        }
    }
    const auto journal = Journal::madeOf(inHidden(kJournal));
    if (!journal) return;
    finished_.reset();
    earlier_ = Json::parse(*journal, nullptr, false);
    const Journal parts(inHidden(kJournal), *journal, 1, 1);
    own_.insert(own_.end(), parts.parts().begin(), parts.parts().end());
}

// Throws where what is there is made of something else.
void SweepFolder::expectSame() const {
    if (earlier_ && *earlier_ != madeOf_) refuse(*earlier_);
}

void SweepFolder::refuse(const Json& other) const {
    std::string why;
    const auto add = [&](const std::string& reason) { why += (why.empty() ? "" : "; ") + reason; };
    try {
        if (other.at("kesto") != madeOf_.at("kesto")) {
            add(fmt::format("kesto {} made it, and this is kesto {}", listed(other.at("kesto")), KESTO_VERSION));
        }
        if (other.at("inputs") != madeOf_.at("inputs")) add(changedInputs(madeOf_.at("inputs"), other.at("inputs")));
        if (other.at("design") != madeOf_.at("design")) {
            add(fmt::format("its design of {} members differs", other.at("design").at("members").dump()));
        }
        if (other.at("options") != madeOf_.at("options"))
            add(changedOptions(madeOf_.at("options"), other.at("options")));
        const Json& members = other.at("members");
        if (members != madeOf_.at("members")) {
            add(fmt::format("it holds members {} to {}", members.at(0).dump(), members.at(1).dump()));
        }
    } catch (const nlohmann::json::exception&) {
        add("it does not say what it is made of");
    }
    throw NotReplaceable("other-sweep",
                         fmt::format("{} holds a sweep that this one cannot go on with: {}; --restart begins anew, or "
                                     "choose another folder",
                                     path_, why));
}

bool SweepFolder::isOurs(const std::string& name) const {
    return std::any_of(own_.begin(), own_.end(),
                       [&](const WrittenFile& file) { return file.name == name && isUnchanged(path_, file); });
}

void SweepFolder::expectReplaceable(const std::vector<std::string>& names) const {
    kesto::expectReplaceable(
        path_, names, inputs_, [this](const std::string& name) { return isOurs(name); }, "sweep");
}

void SweepFolder::removeEarlier() {
    for (const WrittenFile& file : own_) {
        if (isUnchanged(path_, file)) fs::remove(pathOf(joined(path_, file.name)));
    }
    clearHidden();
    own_.clear();
    finished_.reset();
}

// What this process or one that was killed has left aside. The journal goes last: it tells what is the sweep's own.
void SweepFolder::clearHidden() const {
    for (const fs::directory_entry& entry : fs::directory_iterator(pathOf(hidden_.path))) {
        const fs::path name = entry.path().filename();
        if (name != kLockFile && name != kJournal && !fs::is_directory(entry.symlink_status()))
            fs::remove(entry.path());
    }
    fs::remove(pathOf(inHidden(kJournal)));
}

// A part that was written and not yet moved is moved now. The tables are written anew.
void SweepFolder::takeUpParts() {
    for (const WrittenFile& part : journal_->parts()) {
        if (part.name == kMembersTable || part.name == kMembersFile) continue;
        if (!isThere(path_, part) && isUnchanged(hidden_.path, part)) move(part.name);
    }
}

bool SweepFolder::hasPart(const std::string& name) const {
    const WrittenFile* part = journal_->part(name);
    return part && isThere(path_, *part);
}

void SweepFolder::addPart(const std::string& name) {
    announce(name);
    move(name);
}

// Known as ours before it is moved, wherever this process may be killed.
void SweepFolder::announce(const std::string& name) {
    const WrittenFile file = fileAside(name);
    if (const std::error_code error = syncToDisk(aside(name))) {
        throw std::runtime_error(fmt::format("cannot write {}: {}", aside(name), reasonOf(error)));
    }
    journal_->addPart(file);
    own_.push_back(file);
}

// Hours may have passed, and another file may stand there now.
void SweepFolder::move(const std::string& name) {
    try {
        expectReplaceable({name});
    } catch (const NotReplaceable& refusal) {
        throw std::runtime_error(refusal.what());
    }
    const std::string to = joined(path_, name);
    if (const std::error_code error = moveFile(aside(name), to)) {
        throw std::runtime_error(fmt::format("cannot write {}: {}", to, reasonOf(error)));
    }
}

// Wherever this is stopped, the journal is there until all else is in its place.
void SweepFolder::finish(const Json& members) {
    const std::string table(kMembersTable), summary(kMembersFile);
    writeFile(aside(summary), members.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
    announce(table);
    announce(summary);
    move(table);
    move(summary);
    journal_.reset();
    clearHidden();
    finished_ = members;
}

}  // namespace kesto
