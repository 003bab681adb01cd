#include "components/head.h"

float head(float V, float a0, float a1, float a2) {
    const auto v = static_cast<double>(V);
    const double h =
        static_cast<double>(a0) + static_cast<double>(a1) * v / 1e9 + static_cast<double>(a2) * (v * v) / 1e18;
    return h < 0.0 ? 0.0F : static_cast<float>(h);
}

HeadOf::HeadOf(Binder& b, const ComponentRow* reservoir) {
    if (!reservoir) return;
    V_ = b.before(Series::WatQuant, id(reservoir));
    std::tie(a0_, a1_, a2_) = b.specifications<30, 31, 32>(b.find(id(reservoir)));
}
