// What is wrong with a model or doubtful about it and its results: collected, so that everything is reported at
// once.
#pragma once

#include <functional>
#include <iosfwd>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "error_codes.h"
#include "place.h"
#include "warning_codes.h"

namespace kesto {

enum class Severity { error, warning, note };
std::string_view toText(Severity severity);

struct Diagnostic {
    Severity severity;
    Place place;
    std::string text;
    std::string_view code = {};
    std::string component = {};  // name of the one it is about; empty: of none, or of several
};

class Diagnostics {
  public:
    void error(ErrorName name, const Place& place, std::string text, std::string component = {});
    // A warning, or a note where the code is one of notes.
    void warning(WarningName name, const Place& place, std::string text, std::string component = {});

    // While it lives, what names no component is about this one.
    class Subject {
      public:
        Subject(Diagnostics& diagnostics, std::string component) : diagnostics_(diagnostics) {
            diagnostics_.subject_ = std::move(component);
        }
        ~Subject() { diagnostics_.subject_.clear(); }
        Subject(const Subject&) = delete;
        Subject& operator=(const Subject&) = delete;

      private:
        Diagnostics& diagnostics_;
    };

    // Warnings that are meant: of this code, and of this component unless its name is empty. They are still shown.
    void accept(std::string code, std::string component);
    void acceptAs(const Diagnostics& others);
    bool isAccepted(const Diagnostic& diagnostic) const;
    std::vector<const Diagnostic*> unaccepted() const;  // warnings, which a strict run fails on

    // As suggestion(), for the first twenty names: each is compared with all that there are.
    using Names = std::vector<std::string_view>;
    std::string suggest(std::string_view found, const std::function<Names()>& candidates);

    // Takes over what others have found.
    void append(const Diagnostics& others);
    void append(Diagnostic diagnostic) { all_.push_back(std::move(diagnostic)); }

    // Takes over what others have found and these have not, with a text before it.
    void addNew(const Diagnostics& others, const std::string& before);

    bool hasErrors() const;
    const Diagnostic* firstError() const;  // null: there is none
    std::size_t count(Severity severity) const;
    const std::vector<Diagnostic>& all() const { return all_; }
    std::vector<const Diagnostic*> inOrder() const;  // of file and line

    // In order, each as "file:line:column: error: text"; of those from `first` on, and errors alone when asked so. Of
    // each code the first twenty, and how many there are more.
    void print(std::ostream& out, bool errorsOnly = false, std::size_t first = 0) const;

  private:
    void add(Severity severity, const Place& place, std::string text, std::string_view code, std::string component);

    std::vector<Diagnostic> all_;
    std::string subject_;
    int suggested_ = 0;
    std::set<std::pair<std::string, std::string>> accepted_;  // code and component
};

// `; did you mean "tank"?` for the candidate nearest to what was found, or one that it begins; nothing when
// none is near. Of a model, Diagnostics::suggest.
std::string suggestion(std::string_view found, const std::vector<std::string_view>& candidates);

// "a, b or c", cut short after some twenty.
std::string listOf(const std::vector<std::string_view>& names, std::string_view last = "or");

}  // namespace kesto
