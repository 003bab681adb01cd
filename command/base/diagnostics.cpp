#include "diagnostics.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <numeric>
#include <ostream>
#include <set>

#include "display.h"

namespace kesto {

namespace {

constexpr int kMostSuggested = 20;
constexpr int kMostPrinted = 20;              // of one code
constexpr std::size_t kLongestText = 1000;    // of a message
constexpr std::size_t kLongestGuessed = 200;  // of a name that another is suggested for

// Levenshtein distance, letters of either case alike.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const bool same =
                std::tolower(static_cast<unsigned char>(a[i])) == std::tolower(static_cast<unsigned char>(b[j]));
            const std::size_t replaced = diagonal + (same ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row[b.size()];
}

bool standsBefore(const Place& a, const Place& b) {
    const std::string_view fileA = a.file ? std::string_view(*a.file) : std::string_view();
    const std::string_view fileB = b.file ? std::string_view(*b.file) : std::string_view();
    if (fileA != fileB) return fileA < fileB;
    return a.line != b.line ? a.line < b.line : a.column < b.column;
}

}  // namespace

std::string toString(const Place& place) {
    std::string text = place.file ? *place.file : std::string("model");
    if (place.line > 0) text += fmt::format(":{}", place.line);
    if (place.line > 0 && place.column > 0) text += fmt::format(":{}", place.column);
    return text;
}

std::string_view toText(Severity severity) {
    static constexpr std::string_view kSeverities[] = {"error", "warning", "note"};
    return kSeverities[static_cast<std::size_t>(severity)];
}

void Diagnostics::add(Severity severity, const Place& place, std::string text, std::string_view code,
                      std::string component) {
    if (component.empty()) component = subject_;
    // A value of some megabytes is still a message.
    if (text.size() > kLongestText) text = shortened(text, kLongestText);
    all_.push_back({severity, place, std::move(text), code, std::move(component)});
}

void Diagnostics::error(ErrorName name, const Place& place, std::string text, std::string component) {
    add(Severity::error, place, std::move(text), name.code().name, std::move(component));
}

void Diagnostics::warning(WarningName name, const Place& place, std::string text, std::string component) {
    const WarningCode& code = name.code();
    const Severity severity = code.about == About::note ? Severity::note : Severity::warning;
    add(severity, place, std::move(text), code.name, std::move(component));
}

void Diagnostics::accept(std::string code, std::string component) {
    accepted_.emplace(std::move(code), std::move(component));
}

void Diagnostics::acceptAs(const Diagnostics& others) {
    accepted_.insert(others.accepted_.begin(), others.accepted_.end());
}

bool Diagnostics::isAccepted(const Diagnostic& diagnostic) const {
    if (diagnostic.severity != Severity::warning || accepted_.empty()) return false;
    const std::string code(diagnostic.code);
    return accepted_.contains({code, ""}) || accepted_.contains({code, diagnostic.component});
}

std::vector<const Diagnostic*> Diagnostics::unaccepted() const {
    std::vector<const Diagnostic*> refused;
    for (const Diagnostic* diagnostic : inOrder()) {
        if (diagnostic->severity == Severity::warning && !isAccepted(*diagnostic)) refused.push_back(diagnostic);
    }
    return refused;
}

void Diagnostics::append(const Diagnostics& others) {
    for (const Diagnostic& one : others.all_) {
        add(one.severity, one.place, one.text, one.code, one.component);
    }
}

void Diagnostics::addNew(const Diagnostics& others, const std::string& before) {
    std::set<std::string> known;
    const auto textOf = [](const Diagnostic& one) { return toString(one.place) + ": " + one.text; };
    for (const Diagnostic& one : all_) {
        known.insert(textOf(one));
    }
    for (const Diagnostic& one : others.all_) {
        if (!known.insert(textOf(one)).second) continue;
        all_.push_back(one);
        all_.back().text = before + one.text;
    }
}

bool Diagnostics::hasErrors() const {
    return count(Severity::error) > 0;
}

const Diagnostic* Diagnostics::firstError() const {
    const auto found =
        std::find_if(all_.begin(), all_.end(), [](const Diagnostic& one) { return one.severity == Severity::error; });
    return found == all_.end() ? nullptr : &*found;
}

std::size_t Diagnostics::count(Severity severity) const {
    return static_cast<std::size_t>(
        std::count_if(all_.begin(), all_.end(), [severity](const Diagnostic& d) { return d.severity == severity; }));
}

std::vector<const Diagnostic*> Diagnostics::inOrder() const {
    std::vector<const Diagnostic*> sorted;
    for (const Diagnostic& diagnostic : all_) {
        sorted.push_back(&diagnostic);
    }
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Diagnostic* a, const Diagnostic* b) { return standsBefore(a->place, b->place); });
    return sorted;
}

std::string Diagnostics::suggest(std::string_view found, const std::function<Names()>& candidates) {
    if (suggested_ == kMostSuggested) return {};
    ++suggested_;
    return suggestion(found, candidates());
}

void Diagnostics::print(std::ostream& out, bool errorsOnly, std::size_t first) const {
    std::vector<const Diagnostic*> shown = inOrder();
    std::erase_if(shown, [&](const Diagnostic* one) {
        return one < all_.data() + first || (errorsOnly && one->severity != Severity::error);
    });
    std::map<std::string_view, int> left;  // of each code
    for (const Diagnostic* diagnostic : shown) {
        ++left[diagnostic->code];
    }
    std::map<std::string_view, int> printed;
    for (const Diagnostic* diagnostic : shown) {
        int& count = printed[diagnostic->code];
        if (count == kMostPrinted) continue;
        ++count;
        const Severity severity = diagnostic->severity;
        out << printable(toString(diagnostic->place)) << ": " << toText(severity) << ": "
            << printable(diagnostic->text);
        // The code is what `accept` takes.
        if (severity == Severity::warning) {
            out << " [" << diagnostic->code << (isAccepted(*diagnostic) ? ", accepted]" : "]");
        }
        out << '\n';
        const int more = left[diagnostic->code] - kMostPrinted;
        if (count < kMostPrinted || more == 0) continue;
        out << fmt::format("{}: … and {} more of this kind ({})\n", toText(severity),
                           withThousands(static_cast<std::size_t>(more)), diagnostic->code);
    }
}

std::string suggestion(std::string_view found, const std::vector<std::string_view>& candidates) {
    if (found.size() > kLongestGuessed) return {};
    std::string_view best;
    std::size_t least = found.size() < 4 ? 2 : std::max<std::size_t>(found.size() / 3, 2) + 1;
    for (std::string_view candidate : candidates) {
        // One is at least so far from the other as it is longer.
        if (candidate.size() >= found.size() + least || found.size() >= candidate.size() + least) continue;
        const std::size_t d = distance(found, candidate);
        if (d < least) {
            least = d;
            best = candidate;
        }
    }
    // Half a word is often meant for the whole.
    for (const std::string_view candidate : candidates) {
        if (best.empty() && found.size() >= 3 && candidate.starts_with(found)) best = candidate;
    }
    return best.empty() ? std::string{} : fmt::format("; did you mean \"{}\"?", best);
}

std::string listOf(const std::vector<std::string_view>& names, std::string_view last) {
    constexpr std::size_t kMost = 20;
    std::string text;
    for (std::size_t i = 0; i < names.size() && i < kMost; ++i) {
        if (i > 0) text += i + 1 == names.size() ? fmt::format(" {} ", last) : ", ";
        text += names[i];
    }
    if (names.size() > kMost) text += ", ...";
    return text;
}

}  // namespace kesto
