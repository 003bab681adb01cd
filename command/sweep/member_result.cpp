#include "member_result.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace kesto {

namespace {

class Packer {
  public:
    explicit Packer(std::span<char> room) : room_(room) {}

    void put(const void* bytes, std::size_t count) {
        if (count > room_.size() - used_) throw std::length_error("the figures of the member take too much memory");
        if (count > 0) std::memcpy(room_.data() + used_, bytes, count);
        used_ += count;
    }
    void number(std::uint64_t value) { put(&value, sizeof value); }
    void text(std::string_view value) {
        number(value.size());
        put(value.data(), value.size());
    }
    std::size_t used() const { return used_; }

  private:
    std::span<char> room_;
    std::size_t used_ = 0;
};

class Unpacker {
  public:
    explicit Unpacker(std::string_view bytes) : bytes_(bytes) {}

    void take(void* to, std::size_t count) {
        if (count > bytes_.size()) throw std::length_error("a member has handed over too little");
        if (count > 0) std::memcpy(to, bytes_.data(), count);
        bytes_.remove_prefix(count);
    }
    std::uint64_t number() {
        std::uint64_t value = 0;
        take(&value, sizeof value);
        return value;
    }
    std::string text() {
        const std::uint64_t length = number();
        if (length > bytes_.size()) throw std::length_error("a member has handed over too little");
        std::string value(bytes_.substr(0, length));
        bytes_.remove_prefix(length);
        return value;
    }

  private:
    std::string_view bytes_;
};

}  // namespace

std::size_t toBytes(const MemberResult& result, std::span<char> room) {
    Packer packer(room);
    packer.number(static_cast<std::uint64_t>(result.outcome));
    packer.text(result.message);
    packer.text(result.findings);
    packer.number(result.columns.key);
    packer.number(result.columns.all.size());
    for (const MemberColumn& column : result.columns.all) {
        packer.text(column.name);
        packer.text(column.unit);
    }
    packer.number(result.values.size());
    packer.put(result.values.data(), result.values.size() * sizeof(double));
    return packer.used();
}

MemberResult memberResultFrom(std::string_view bytes) {
    Unpacker unpacker(bytes);
    MemberResult result;
    result.outcome = static_cast<Outcome>(unpacker.number());
    result.message = unpacker.text();
    result.findings = unpacker.text();
    result.columns.key = unpacker.number();
    for (std::uint64_t left = unpacker.number(); left > 0; --left) {
        std::string name = unpacker.text();
        result.columns.all.push_back({std::move(name), unpacker.text()});
    }
    result.values.resize(unpacker.number());
    unpacker.take(result.values.data(), result.values.size() * sizeof(double));
    return result;
}

}  // namespace kesto
