#include "toml_depth.h"

#include <algorithm>
#include <vector>

namespace kesto {

namespace {

class Scanner {
  public:
    explicit Scanner(std::string_view text) : text_(text) {}

    std::optional<TomlPosition> scan() {
        for (; at_ < text_.size(); ++at_) {
            take(text_[at_]);
            if (depth_ > kDeepestNesting) return position();
        }
        return std::nullopt;
    }

  private:
    void take(char c) {
        switch (c) {
            case '#':
                at_ = std::min(text_.find('\n', at_), text_.size()) - 1;
                return;
            case '"':
            case '\'':
                return skipString(c);
            case '[':
            case '{':
                open_.push_back(dots_);
                depth_ += 1;
                dots_ = 0;
                return;
            case ']':
            case '}':
                return close();
            case '.':
                ++dots_;
                ++depth_;
                return;
            case ',':
            case '\n':
                return endKey();
            default:
                return;
        }
    }

    void endKey() {
        depth_ -= dots_;
        dots_ = 0;
    }

    void close() {
        endKey();
        if (open_.empty()) return;
        dots_ = open_.back();
        open_.pop_back();
        depth_ -= 1;
    }

    // To its last quote, or to the end of the text when it is not closed.
    void skipString(char quote) {
        const std::string_view three = quote == '"' ? R"(""")" : "'''";
        const bool isLong = text_.substr(at_).starts_with(three);
        at_ += isLong ? 3 : 1;
        for (; at_ < text_.size(); ++at_) {
            const char c = text_[at_];
            if (c == '\\' && quote == '"') {
                ++at_;
            } else if (isLong ? text_.substr(at_).starts_with(three) : c == quote) {
                if (isLong) at_ += 2 + quotesFrom(at_ + 3, quote);
                return;
            } else if (c == '\n' && !isLong) {
                return;
            }
        }
    }

    // A text in three quotes may end with one or two of its own before them.
    std::size_t quotesFrom(std::size_t at, char quote) const {
        std::size_t count = 0;
        while (count < 2 && at + count < text_.size() && text_[at + count] == quote)
            ++count;
        return count;
    }

    TomlPosition position() const {
        TomlPosition position;
        for (std::size_t i = 0; i < at_; ++i) {
            ++position.column;
            if (text_[i] != '\n') continue;
            ++position.line;
            position.column = 1;
        }
        return position;
    }

    std::string_view text_;
    std::size_t at_ = 0;
    std::vector<int> open_;  // of each bracket, the dots of the key before it
    int dots_ = 0;           // of the current key
    int depth_ = 0;          // brackets and dots
};

}  // namespace

std::optional<TomlPosition> tooDeepAt(std::string_view text) {
    return Scanner(text).scan();
}

}  // namespace kesto
