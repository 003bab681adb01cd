// A place in a file that a person wrote.
#pragma once

#include <memory>
#include <string>

namespace kesto {

struct Place {
    std::shared_ptr<const std::string> file;
    int line = 0;  // from 1; 0: the whole file
    int column = 0;
};

// "model.toml:12:8", as short as what is known.
std::string toString(const Place& place);

template <class T>
struct Placed {
    T value{};
    Place place;
};

using PlacedText = Placed<std::string>;

}  // namespace kesto
