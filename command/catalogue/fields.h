// What the types of components are for, in a word: the parts of the catalogue.
#pragma once

#include <cstdint>
#include <string_view>

#include "catalogue.h"

namespace kesto {

enum class Field : std::uint8_t { users, surfaces, stores, treatment, supply, links, routing, quality, energy };
inline constexpr std::size_t kFields = 9;

std::string_view toText(Field field);  // "users"
Field fieldOf(const Type& type);

}  // namespace kesto
