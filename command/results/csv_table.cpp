#include "csv_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <thread>

#include "platform.h"

namespace kesto {

namespace {

constexpr std::size_t kLongest = 16;          // a comma and "-1.00000685e-36"
constexpr std::size_t kBeginCells = 2;        // that the text at the beginning of a row may take
constexpr std::size_t kTileSteps = 16;        // of a column's values two lines of the cache
constexpr std::size_t kBlockBytes = 4 << 20;  // of text that one thread makes at a time
constexpr std::size_t kEntries = 1 << 13;

// Digits of values seen before: zeros and values that repeat, from day to day or from column to column, are most of a
// table, and looking them up takes a tenth of the time of working their digits out.
class Digits {
  public:
    Digits() : entries_(kEntries) {
        // No value is found before it was stored.
        entries_[slotOf(0)].bits = 1;
    }

    char* append(char* to, float value) {
        const auto bits = std::bit_cast<std::uint32_t>(value);
        Entry& entry = entries_[slotOf(bits)];
        if (entry.bits != bits) store(entry, bits, value);
        std::memcpy(to, entry.text.data(), kLongest);
        return to + entry.length;
    }

  private:
    struct Entry {
        std::uint32_t bits = 0;
        std::uint8_t length = 0;
        std::array<char, kLongest> text{};
    };

    static std::size_t slotOf(std::uint32_t bits) { return (bits * 2654435769U) >> 19; }  // 13 bits, Fibonacci hashing

    static void store(Entry& entry, std::uint32_t bits, float value) {
        entry.bits = bits;
        char* const begin = entry.text.data();
        *begin = ',';
        if (std::isnan(value)) {
            std::memcpy(begin + 1, "nan", 3);
            entry.length = 4;
        } else {
            const auto [end, error] = std::to_chars(begin + 1, begin + kLongest, value);
            entry.length = static_cast<std::uint8_t>(end - begin);
        }
    }

    std::vector<Entry> entries_;
};

// Text of consecutive rows.
class Block {
  public:
    void make(std::size_t first, std::size_t end, const std::function<std::string(std::size_t)>& beginOf,
              const std::vector<CsvColumn>& columns) {
        text_.resize((end - first) * ((columns.size() + kBeginCells) * kLongest));
        tile_.resize(kTileSteps * columns.size());
        char* to = text_.data();
        for (std::size_t step = first; step < end; ++step) {
            if ((step - first) % kTileSteps == 0) fill(step, std::min(kTileSteps, end - step), columns);
            const std::string text = beginOf(step);
            to = std::copy(text.begin(), text.end(), to);
            const float* const row = &tile_[(step - first) % kTileSteps * columns.size()];
            for (std::size_t i = 0; i < columns.size(); ++i) {
                to = digits_.append(to, row[i]);
            }
            *to++ = '\n';
        }
        size_ = static_cast<std::size_t>(to - text_.data());
    }

    bool write(std::FILE* file) const { return std::fwrite(text_.data(), 1, size_, file) == size_; }

  private:
    // Rows from columns, so that each line of the cache is read once.
    void fill(std::size_t first, std::size_t steps, const std::vector<CsvColumn>& columns) {
        for (std::size_t i = 0; i < columns.size(); ++i) {
            const CsvColumn& column = columns[i];
            for (std::size_t step = 0; step < steps; ++step) {
                tile_[step * columns.size() + i] = column.values[(first + step) * column.stride];
            }
        }
    }

    Digits digits_;
    std::vector<char> text_;
    std::vector<float> tile_;
    std::size_t size_ = 0;
};

// Blocks of rows on all cores, written in their order.
bool writeRows(std::FILE* file, std::size_t steps, const std::function<std::string(std::size_t)>& beginOf,
               const std::vector<CsvColumn>& columns) {
    const std::size_t rowBytes = (columns.size() + kBeginCells) * kLongest;
    const std::size_t rows = std::max(kTileSteps, kBlockBytes / rowBytes / kTileSteps * kTileSteps);
    const std::size_t most = std::max(1U, std::thread::hardware_concurrency());
    std::vector<Block> blocks(std::min(most, (steps + rows - 1) / rows));
    bool isGood = true;
    for (std::size_t first = 0; first < steps && isGood; first += blocks.size() * rows) {
        std::vector<std::jthread> threads;
        const auto make = [&](std::size_t i) {
            const std::size_t begin = std::min(first + i * rows, steps);
            blocks[i].make(begin, std::min(begin + rows, steps), beginOf, columns);
        };
        for (std::size_t i = 1; i < blocks.size(); ++i) {
            threads.emplace_back(make, i);
        }
        make(0);
        threads.clear();  // waits for them
        for (const Block& block : blocks) {
            isGood = isGood && block.write(file);
        }
    }
    return isGood;
}

}  // namespace

void writeCsvTable(const std::string& path, std::size_t steps, const std::function<std::string(std::size_t)>& beginOf,
                   const std::vector<CsvColumn>& columns, const std::string& begin) {
    std::FILE* file = openFile(path, "wb");
    if (!file) throw std::runtime_error(fmt::format("cannot write {}: {}", path, reasonOf(lastError())));
    std::string header = begin;
    for (const CsvColumn& column : columns) {
        header += "," + column.header;
    }
    header += '\n';
    bool isGood = std::fwrite(header.data(), 1, header.size(), file) == header.size();
    isGood = isGood && writeRows(file, steps, beginOf, columns);
    std::error_code error = isGood ? std::error_code() : lastError();
    if (std::fclose(file) != 0 && !error) error = lastError();
    if (error) throw std::runtime_error(fmt::format("cannot write {}: {}", path, reasonOf(error)));
}

}  // namespace kesto
