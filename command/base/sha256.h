// The checksum by which a result knows its model.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>

namespace kesto {

// Of text that comes in pieces.
class Sha256 {
  public:
    Sha256();
    ~Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;
    void add(std::string_view text);
    // What is added after either begins anew.
    std::array<unsigned char, 32> digest();
    std::string text();  // in hexadecimal digits

  private:
    struct State;
    std::unique_ptr<State> state_;
};

// Of a whole text, as bytes.
std::array<unsigned char, 32> sha256Of(std::string_view text);

// In hexadecimal digits, as sha256sum prints it; empty when the file cannot be read.
std::string sha256OfFile(const std::string& path);

}  // namespace kesto
