// Finds the rows of a table by key, as a scan from the first row would: the first match wins.
#ifndef KESTO_COMPONENTS_ROW_FINDER_H
#define KESTO_COMPONENTS_ROW_FINDER_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

// Equal keys have equal bits: 0 and -0 are one key.
inline std::uint64_t bitsOf(std::int32_t key) {
    return static_cast<std::uint32_t>(key);
}
inline std::uint64_t bitsOf(float key) {
    return std::bit_cast<std::uint32_t>(key + 0.0F);
}
inline std::uint64_t bitsOf(const std::pair<float, float>& key) {
    return bitsOf(key.first) << 32U | bitsOf(key.second);
}

// `keyOf` gives the key of a row. A key that is not a number equals none, so that its row is never found.
template <typename Row, auto keyOf>
class RowFinder {
  public:
    using Key = decltype(keyOf(std::declval<const Row&>()));

    RowFinder() = default;

    // A short table is scanned, a longer one gets an index, unless its keys may change. A host may leave an unused
    // table null, whatever its count says. May throw std::bad_alloc.
    RowFinder(const Row* rows, std::int32_t count, bool mayIndex = true)
        : rows_(rows), count_(rows && count > 0 ? count : 0) {
        if (mayIndex && count_ > kShort) buildIndex();
    }

    // Where the first row with a key stands, at or after `from`; -1 without one.
    std::int32_t first(const Key& key, std::int32_t from = 0) const {
        if (heads_.empty()) {
            for (std::int32_t i = from; i < count_; ++i) {
                if (keyOf(rows_[i]) == key) return i;
            }
            return kNone;
        }
        for (std::int32_t i = heads_[chainOf(key)]; i != kNone; i = next_[static_cast<std::size_t>(i)]) {
            if (i >= from && keyOf(rows_[i]) == key) return i;
        }
        return kNone;
    }

  private:
    static constexpr std::int32_t kNone = -1;
    static constexpr std::int32_t kShort = 8;

    // Chains of rows in table order. Keys that differ share a chain only by chance.
    void buildIndex() {
        const auto count = static_cast<std::size_t>(count_);
        const auto bits = static_cast<unsigned>(std::bit_width(count));
        shift_ = 64 - bits;
        heads_.assign(std::size_t{1} << bits, kNone);
        next_.resize(count);
        for (std::size_t i = count; i-- > 0;) {
            const Key key = keyOf(rows_[i]);
            if (!(key == key)) continue;
            std::int32_t& head = heads_[chainOf(key)];
            next_[i] = std::exchange(head, static_cast<std::int32_t>(i));
        }
    }

    // Multiplicative hashing with the golden ratio: Knuth (1998), The Art of Computer Programming 3, 6.4.
    std::size_t chainOf(const Key& key) const {
        return static_cast<std::size_t>(bitsOf(key) * 0x9E3779B97F4A7C15U >> shift_);
    }

    const Row* rows_ = nullptr;
    std::int32_t count_ = 0;
    unsigned shift_ = 0;
    std::vector<std::int32_t> heads_;
    std::vector<std::int32_t> next_;
};

#endif
