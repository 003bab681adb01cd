// Extraterrestrial radiation of day j at latitude phi:
//
//   delta = -0.409 cos(w j + 0.16)                      declination, w = 2 pi / 365
//   ws    = acos(-tan phi tan delta)                    hour angle of sunset
//   dr    = 1 + 0.034 cos(w j - 0.05)                   relative distance to the sun
//   Ra    = (118108.8 / pi) dr (ws sin phi sin delta + cos phi cos delta sin ws)
//
//   118108.8 is the solar constant of 82.02 kJ/m2/min over a day of 1440 minutes. The declination runs about two days
//   behind that of the publication.
//
// Short-wave radiation: Rs = (1 - exp(-B dT^2.4)) 0.7 Ra,  B = 0.036 exp(-0.154 m), dT = tMax - tMin, m its mean.
// Long-wave radiation:  Rl = 0.17 (1.8 Rs / Ra - 0.35) 4.9e-6 T^4, T mean temperature in kelvin.

#include "solarrad.h"

#include <algorithm>
#include <cmath>

#include "errors.h"

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kDayAngle = 0.01721420632103996;
constexpr double kYearDays = 365.2425;

float declination(double j) {
    return static_cast<float>(-0.409 * std::cos(kDayAngle * j + 0.16));
}

float relativeDistance(double j) {
    return static_cast<float>(1.0 + 0.034 * std::cos(kDayAngle * j - 0.05));
}

float radiation(float latitude, int day) {
    const auto phi = static_cast<double>(latitude);
    const auto j = static_cast<double>(day);
    const auto delta = static_cast<double>(declination(j));
    const auto ws = static_cast<double>(static_cast<float>(std::acos(-std::tan(phi) * std::tan(delta))));
    const auto dr = static_cast<double>(relativeDistance(j));
    return static_cast<float>(118108.8 / kPi * dr *
                              (ws * std::sin(phi) * std::sin(delta) + std::cos(phi) * std::cos(delta) * std::sin(ws)));
}

// The last 30 daily ranges of temperature, the newest first, of all callers together. Zero at the start of the process
// and never reset: the mean builds up over the first 30 calls.
std::array<float, 30> detlaT{};

float meanRange(float newest) {
    std::shift_right(detlaT.begin(), detlaT.end(), 1);
    detlaT.front() = newest;
    float sum = 0.0F;
    for (const float range : detlaT)
        sum += range;
    return sum / 30.0F;
}

float transmitted(float Ra, float dT, float m) {
    const auto B = static_cast<float>(0.036 * std::exp(-0.154 * static_cast<double>(m)));
    // The exponent is the single-precision 2.4.
    const double range = std::pow(static_cast<double>(dT), static_cast<double>(2.4F));
    return static_cast<float>((1.0 - std::exp(-static_cast<double>(B) * range)) * static_cast<double>(Ra * 0.7F));
}

}  // namespace

void insolation(const AUEglobals* Globals, DayTable& Rpot) {
    const auto phi = static_cast<float>(2.0 * static_cast<double>(Globals->Latitude / 360.0F) * kPi);
    for (int j = 0; j < static_cast<int>(Rpot.size()); ++j) {
        invariant(j < kYearDays && j >= 0, "j<YEARDAYS && j>=0", "solarrad", 22);
        Rpot[static_cast<std::size_t>(j)] = radiation(phi, j);
    }
}

void fillOnFirstUse(const AUEglobals* Globals, DayTable& Rpot) {
    if (Rpot.front() == 0.0F) insolation(Globals, Rpot);
}

float insolationofthisstep(const DayTable& Rpot, std::int32_t dayOfYear) {
    invariant(dayOfYear < kYearDays && dayOfYear >= 0, "day<YEARDAYS && day>=0", "solarrad", 44);
    return Rpot[static_cast<std::size_t>(dayOfYear)];
}

float directbeamsolar(float Ra, float tMin, float tMax) {
    const float dT = tMax - tMin;
    return transmitted(Ra, dT, meanRange(dT));
}

float netlongwave(float Ra, float shortWave, float t1, float t2) {
    const float r = shortWave / Ra - 0.25F;
    const float f = ((r + r) * 0.9F + 0.1F) * 0.17F;
    const float T = 0.5F * (t1 + t2) + 273.0F;
    return static_cast<float>(static_cast<double>(f) * 4.9e-6 * std::pow(static_cast<double>(T), 4.0));
}
