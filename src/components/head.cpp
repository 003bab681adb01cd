#include "components/head.h"

#include "components/lookup.h"

float head(float V, float a0, float a1, float a2) {
    const auto v = static_cast<double>(V);
    const double h =
        static_cast<double>(a0) + static_cast<double>(a1) * v / 1e9 + static_cast<double>(a2) * (v * v) / 1e18;
    return h < 0.0 ? 0.0F : static_cast<float>(h);
}

std::optional<Stored> readHead(AUEglobals* Globals, const ComponentRow* reservoir) {
    const std::int32_t id = truncated(static_cast<double>(reservoir->id));
    const auto V = readBefore(Globals, Series::WatQuant, id);
    if (!V) return std::nullopt;
    const ComponentRow* const row = findRow(Globals, id);
    if (!row) return std::nullopt;
    const auto specifications = readSpecifications<30, 31, 32>(Globals, row);
    if (!specifications) return std::nullopt;
    const auto [a0, a1, a2] = *specifications;
    return Stored{*V, head(*V, a0, a1, a2)};
}
