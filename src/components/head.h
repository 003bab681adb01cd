// The head curve of a reservoir: water level by stored volume, used by hydropower and by releases between reservoirs.
#ifndef KESTO_COMPONENTS_HEAD_H
#define KESTO_COMPONENTS_HEAD_H

#include <cstdint>

#include "components/model.h"

//   H = max(a0 + a1 V / 1e9 + a2 V^2 / 1e18, 0)
//
//   a0, a1, a2   specifications 30 to 32 of the reservoir's brand
float head(float V, float a0, float a1, float a2);

// WatQuant of a reservoir at the end of the step before, and its head.
struct Stored {
    float V;
    float H;
};

class HeadOf {
  public:
    // Looks nothing up without a reservoir.
    HeadOf(Binder& b, const ComponentRow* reservoir);

    static std::int32_t id(const ComponentRow* reservoir) { return truncated(static_cast<double>(reservoir->id)); }

    bool exists() const { return V_ != nullptr; }
    Stored at(const Block& block, std::int32_t j) const {
        const float V = block.before(V_)[j];
        return {V, head(V, a0_, a1_, a2_)};
    }

  private:
    const float* V_ = nullptr;
    float a0_ = 0.0F;
    float a1_ = 0.0F;
    float a2_ = 0.0F;
};

#endif
