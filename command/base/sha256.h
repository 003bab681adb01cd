// The checksum by which a result knows its model.
#pragma once

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
    std::string text();  // in hexadecimal digits; what is added later begins anew

  private:
    struct State;
    std::unique_ptr<State> state_;
};

// In hexadecimal digits, as sha256sum prints it; empty when the file cannot be read.
std::string sha256OfFile(const std::string& path);

}  // namespace kesto
