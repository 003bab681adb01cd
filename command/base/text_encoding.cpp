#include "text_encoding.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>

namespace kesto {

namespace {

using namespace std::string_view_literals;

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kLittleEndianMark = "\xFF\xFE";
constexpr std::string_view kBigEndianMark = "\xFE\xFF";

struct FileKind {
    std::string_view start;  // its first bytes, letters in small
    std::string_view name;
    std::string_view mend;
};

constexpr std::string_view kExport = "export its sheet as CSV and name that file";
constexpr std::string_view kExpected = "expected a CSV file";

constexpr FileKind kKinds[] = {
    {"pk\x03\x04", "a spreadsheet (.xlsx, .ods) or another ZIP archive", kExport},
    {"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1", "a spreadsheet (.xls) or another Office file", kExport},
    {"\x89png\r\n", "a PNG picture", kExpected},
    {"\xff\xd8\xff", "a JPEG picture", kExpected},
    {"gif8", "a GIF picture", kExpected},
    {"%pdf-", "a PDF document", kExpected},
    {"\x1f\x8b", "a gzip archive", "unpack it and name the CSV file in it"},
    {"\x89hdf\r\n", "an HDF5 or NetCDF-4 file", kExpected},
    {"cdf\x01", "a NetCDF file", kExpected},
    {"cdf\x02", "a NetCDF file", kExpected},
    {"sqlite format 3", "an SQLite database", kExpected},
    {"{\\rtf", "an RTF document", kExpected},
    {"<!doctype html", "an HTML page", kExpected},
    {"<html", "an HTML page", kExpected},
    {"<?xml", "an XML file", kExpected},
};

bool beginsWith(std::string_view bytes, std::string_view start) {
    return bytes.size() >= start.size() && std::equal(start.begin(), start.end(), bytes.begin(), [](char a, char b) {
               return a == static_cast<char>(std::tolower(static_cast<unsigned char>(b)));
           });
}

// Bytes 0x80 to 0x9F; 0 where there is no character.
constexpr std::array<std::uint16_t, 32> kWindows1252{0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                     0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                                     0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                     0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

void append(std::string& text, std::uint32_t character) {
    const auto rest = [&](int shift) { text += static_cast<char>(0x80 | ((character >> shift) & 0x3F)); };
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += static_cast<char>(0xC0 | (character >> 6));
        rest(0);
    } else if (character < 0x10000) {
        text += static_cast<char>(0xE0 | (character >> 12));
        rest(6);
        rest(0);
    } else {
        text += static_cast<char>(0xF0 | (character >> 18));
        rest(12);
        rest(6);
        rest(0);
    }
}

// Length of the character that begins here; 0 where none does.
std::size_t lengthOfCharacter(std::string_view bytes) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
    const unsigned first = byte(0);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    if (length > bytes.size()) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
    }
    // Longer than need be, a surrogate, or beyond the last character.
    if ((first == 0xE0 && byte(1) < 0xA0) || (first == 0xED && byte(1) > 0x9F)) return 0;
    if ((first == 0xF0 && byte(1) < 0x90) || (first == 0xF4 && byte(1) > 0x8F)) return 0;
    return length;
}

// Tables are mostly ASCII: eight bytes at a time.
bool isUtf8(std::string_view bytes) {
    std::size_t at = 0;
    while (at < bytes.size()) {
        std::uint64_t eight = 0;
        while (at + sizeof eight <= bytes.size()) {
            std::memcpy(&eight, bytes.data() + at, sizeof eight);
            if ((eight & 0x8080808080808080U) != 0) break;
            at += sizeof eight;
        }
        if (at >= bytes.size()) break;
        const std::size_t length = lengthOfCharacter(bytes.substr(at));
        if (length == 0) return false;
        at += length;
    }
    return true;
}

std::string fromWindows1252(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 16);
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80 || byte > 0x9F) {
            append(text, byte);
        } else {
            const std::uint16_t character = kWindows1252[byte - 0x80U];
            append(text, character == 0 ? 0xFFFD : character);
        }
    }
    return text;
}

std::string fromUtf16(std::string_view bytes, bool bigEndian) {
    const auto unit = [&](std::size_t at) {
        const unsigned a = static_cast<unsigned char>(bytes[at]), b = static_cast<unsigned char>(bytes[at + 1]);
        return bigEndian ? a << 8 | b : b << 8 | a;
    };
    std::string text;
    text.reserve(bytes.size() / 2 + 1);
    std::size_t at = 2;
    for (; at + 1 < bytes.size(); at += 2) {
        const unsigned first = unit(at);
        const bool isHigh = first >= 0xD800 && first < 0xDC00;
        const unsigned second = isHigh && at + 3 < bytes.size() ? unit(at + 2) : 0;
        if (isHigh && second >= 0xDC00 && second < 0xE000) {
            append(text, 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00));
            at += 2;
        } else {
            append(text, first >= 0xD800 && first < 0xE000 ? 0xFFFD : first);
        }
    }
    if (at < bytes.size()) append(text, 0xFFFD);
    return text;
}

}  // namespace

std::string_view toText(Encoding encoding) {
    if (encoding == Encoding::utf8) return "UTF-8";
    return encoding == Encoding::windows1252 ? "Windows-1252" : "UTF-16";
}

std::optional<std::string> whyNoTable(std::string_view bytes) {
    for (const FileKind& kind : kKinds) {
        if (beginsWith(bytes, kind.start)) return fmt::format("is {}; {}", kind.name, kind.mend);
    }
    const Encoding encoding = encodingOf(bytes);
    const bool isWide = encoding == Encoding::utf16LittleEndian || encoding == Encoding::utf16BigEndian;
    if (!isWide && bytes.find('\0') != std::string_view::npos) {
        return "holds zero bytes, so it is no text, or UTF-16 without a mark; expected a CSV file in UTF-8";
    }
    return std::nullopt;
}

Encoding encodingOf(std::string_view bytes) {
    if (bytes.starts_with(kLittleEndianMark)) return Encoding::utf16LittleEndian;
    if (bytes.starts_with(kBigEndianMark)) return Encoding::utf16BigEndian;
    return isUtf8(bytes) ? Encoding::utf8 : Encoding::windows1252;
}

std::string toUtf8(std::string bytes, Encoding encoding) {
    std::string text;
    if (encoding == Encoding::windows1252) {
        text = fromWindows1252(bytes);
    } else if (encoding == Encoding::utf8) {
        text = std::move(bytes);
        if (text.starts_with(kUtf8Mark)) text.erase(0, kUtf8Mark.size());
    } else {
        text = fromUtf16(bytes, encoding == Encoding::utf16BigEndian);
    }
    // Old spreadsheets end lines with a carriage return alone.
    if (text.find('\n') == std::string::npos) std::replace(text.begin(), text.end(), '\r', '\n');
    return text;
}

}  // namespace kesto
