// A member that each row of a table must give: leaving it out does not compile. Nothing to give is kNothing.
#pragma once

#include <utility>

namespace kesto {

struct Nothing {};
inline constexpr Nothing kNothing;

template <class T>
struct Required : T {
    using T::T;
    Required() = delete;
    Required(T value) : T(std::move(value)) {}
    Required(Nothing) : T() {}
};

}  // namespace kesto
