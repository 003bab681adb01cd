#include "display.h"

#include <fmt/format.h>

#include <algorithm>

namespace kesto {

namespace {

struct Control {
    std::size_t begin = std::string_view::npos, length = 0;  // in bytes
    unsigned int code = 0;
};

// Those of ASCII, and those from U+0080 to U+009F, which some terminals obey, too.
Control nextControl(std::string_view text, std::size_t from) {
    for (std::size_t i = from; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x20 || byte == 0x7F) return {i, 1, byte};
        if (byte != 0xC2 || i + 1 == text.size()) continue;
        const auto second = static_cast<unsigned char>(text[i + 1]);
        if (second >= 0x80 && second < 0xA0) return {i, 2, second};
    }
    return {};
}

// Whether a character of UTF-8 begins there.
bool isStart(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

}  // namespace

std::optional<std::string> controlCharacterIn(std::string_view text) {
    const Control control = nextControl(text, 0);
    if (control.length == 0) return std::nullopt;
    return fmt::format("U+{:04X}", control.code);
}

std::string printable(std::string_view text) {
    std::string shown;
    std::size_t at = 0;
    for (Control control = nextControl(text, 0); control.length > 0; control = nextControl(text, at)) {
        shown += text.substr(at, control.begin - at);
        shown += fmt::format("\\u{:04X}", control.code);
        at = control.begin + control.length;
    }
    return shown += text.substr(at);
}

std::string printableLines(std::string_view text) {
    std::string shown;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        shown += printable(text.substr(at, end - at));
        if (end < text.size()) shown += '\n';
        at = end + 1;
    }
    return shown;
}

std::string shortened(std::string_view text, std::size_t most) {
    if (text.size() <= most) return std::string(text);
    std::size_t head = most * 2 / 3, tail = text.size() - most / 3;
    while (head > 0 && !isStart(text[head]))
        --head;
    while (tail < text.size() && !isStart(text[tail]))
        ++tail;
    return fmt::format("{}…{}", text.substr(0, head), text.substr(tail));
}

std::string withThousands(std::size_t number) {
    if (number < 1000) return std::to_string(number);
    return fmt::format("{},{:03}", withThousands(number / 1000), number % 1000);
}

}  // namespace kesto
