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

void moveTo(const std::string& from, const std::string& to) {
    if (const std::error_code error = syncToDisk(from)) {
        throw std::runtime_error(fmt::format("cannot write {}: {}", from, reasonOf(error)));
    }
    if (const std::error_code error = moveFile(from, to)) {
        throw std::runtime_error(fmt::format("cannot write {}: {}", to, reasonOf(error)));
    }
}

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
    : path_(path), madeOf_(std::move(madeOf)), hidden_(path) {
    readEarlier();
    if (!restart) expectSame();
    std::vector<std::string> names{std::string(kMembersTable), std::string(kMembersFile)};
    names.insert(names.end(), parts.begin(), parts.end());
    expectReplaceable(
        path, names, inputs, [this](const std::string& name) { return isOurs(name); }, "sweep");
    if (restart) removeEarlier();
    if (finished_) return;
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
            old_ = filesIn(json.at("files"));
            earlier_ = json.at("made_of");
            old_.push_back({std::string(kMembersFile), text.size(), {}});
            const bool isWhole =
                std::all_of(old_.begin(), old_.end(), [&](const WrittenFile& file) { return isThere(path_, file); });
            if (earlier_ == madeOf_ && isWhole) finished_ = json;
        } catch (const nlohmann::json::exception&) {
            old_.clear();  // a file of somebody else
        }
    }
    const auto journal = Journal::madeOf(inHidden(kJournal));
    if (!journal) return;
    finished_.reset();
    earlier_ = Json::parse(*journal, nullptr, false);
    const Journal parts(inHidden(kJournal), *journal, 1, 1);
    old_.insert(old_.end(), parts.parts().begin(), parts.parts().end());
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
    return std::any_of(old_.begin(), old_.end(),
                       [&](const WrittenFile& file) { return file.name == name && isThere(path_, file); });
}

void SweepFolder::removeEarlier() {
    for (const WrittenFile& file : old_) {
        if (isThere(path_, file)) fs::remove(pathOf(joined(path_, file.name)));
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(pathOf(hidden_.path))) {
        if (entry.path().filename() != kLockFile && !fs::is_directory(entry.symlink_status())) fs::remove(entry.path());
    }
    finished_.reset();
}

// A part that was written and not yet moved is moved now.
void SweepFolder::takeUpParts() {
    for (const WrittenFile& part : journal_->parts()) {
        if (!isThere(path_, part) && fs::exists(pathOf(aside(part.name)))) movePart(part.name);
    }
}

bool SweepFolder::hasPart(const std::string& name) const {
    const WrittenFile* part = find(journal_->parts(), name);
    return part && isThere(path_, *part);
}

// Known as ours before it is moved, wherever this process may be killed.
void SweepFolder::addPart(const std::string& name) {
    journal_->addPart(fileAside(name));
    movePart(name);
}

void SweepFolder::movePart(const std::string& name) {
    moveTo(aside(name), joined(path_, name));
}

void SweepFolder::finish(const Json& members) {
    moveTo(aside(kMembersTable), joined(path_, kMembersTable));
    replaceFile(joined(path_, kMembersFile), members.dump(2, ' ', false, Json::error_handler_t::replace) + "\n");
    journal_.reset();
    fs::remove(pathOf(inHidden(kJournal)));
    finished_ = members;
}

}  // namespace kesto
