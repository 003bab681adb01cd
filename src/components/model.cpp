#include "components/model.h"

#include "calendar.h"
#include "errors.h"

void Notes::RadiationUnit::radiate(const Block& block, std::int32_t j) const {
    const std::int32_t k = block.begin + j;
    const float Ra = insolationofthisstep(*Rpot, block.dates[j].dayOfYear);
    block.part(shortWave)[j] = directbeamsolar(Ra, temperatures.tMin[k], temperatures.tMax[k]);
}

const ComponentRow* Binder::find(std::int32_t id) {
    const ComponentRow* const row = failed_ ? nullptr : lookups_.findRow(id);
    if (!row) failed_ = true;
    return row;
}

const ComponentRow* Binder::findReservoir(const ComponentRow* after) {
    return failed_ ? nullptr : lookups_.findReservoir(row_, after);
}

const ComponentRow* Binder::findOrdinaryReservoir(const ComponentRow* after) {
    constexpr std::int32_t kReserved = -1;
    const ComponentRow* const row = findReservoir(after);
    return row && truncated(static_cast<double>(row->id)) == kReserved ? nullptr : row;
}

const float* Binder::now(Series kind, std::int32_t id) {
    const auto values = failed_ ? std::nullopt : lookups_.findSeries(kind, id);
    if (!values || !checkStep(Globals_, Globals_->CurStep, id)) failed_ = true;
    return values.value_or(nullptr);
}

const float* Binder::before(Series kind, std::int32_t id) {
    const auto values = failed_ ? std::nullopt : lookups_.findSeries(kind, id);
    const std::int32_t step = Globals_->CurStep > 0 ? Globals_->CurStep - 1 : Globals_->CurStep;
    if (!values || !checkStep(Globals_, step, id)) failed_ = true;
    note(values.value_or(nullptr), false);
    return values.value_or(nullptr);
}

float* Binder::after(Series kind) {
    const auto values = failed_ ? std::nullopt : lookups_.writableSeries(kind, id());
    if (!values || !checkStep(Globals_, Globals_->CurStep, id())) failed_ = true;
    note(values.value_or(nullptr), true);
    return values.value_or(nullptr);
}

Signal* Binder::record(Record kind) {
    Signal* const signals = failed_ ? nullptr : lookups_.findRecord(kind, id());
    if (!signals) failed_ = true;
    note(signals, true);
    return signals;
}

void Binder::checkStepOf(std::int32_t id) {
    if (!failed_ && !checkStep(Globals_, Globals_->CurStep, id)) failed_ = true;
}

Signal* Binder::recordNow(Record kind) {
    Signal* const signals = record(kind);
    checkStepOf(id());
    return signals;
}

float* Binder::potential(Series kind) {
    if (failed_ || key() < 1) return nullptr;
    const auto values = lookups_.writableSeries(kind, key());
    if (!values) failed_ = true;
    return isInside(Globals_, Globals_->CurStep) ? values.value_or(nullptr) : nullptr;
}

const float* Binder::multiplier() {
    if (failed_) return nullptr;
    const auto factors = lookups_.findMultiplier(id());
    if (!factors || (*factors && !checkStep(Globals_, Globals_->CurStep, id()))) failed_ = true;
    return factors.value_or(nullptr);
}

const float* Binder::frequencies(std::int32_t group, std::int32_t kind, std::int32_t mostKinds) {
    const auto values = failed_ ? std::nullopt : lookups_.findFrequencies(group);
    if (!values) failed_ = true;
    if (kind < 1 || kind > mostKinds) error(text::kApplianceKind);
    checkStepOf(group);
    return values.value_or(nullptr);
}

Temperatures Binder::temperatures() {
    const float* const tMin = ofKey(Series::Tmin);
    const float* const tMax = ofKey(Series::Tmax);
    if (!failed_ && tMin[Globals_->CurStep] > tMax[Globals_->CurStep]) error(text::kTemperatures);
    if (!failed_) notes_.temperatures.push_back({tMin, tMax});
    return {tMin, tMax};
}

bool Binder::dates() {
    if (failed_) return false;
    notes_.needsDates = true;
    const auto date = calendarOfStep(Globals_);
    date_ = date ? Date{date->tm_mday, date->tm_yday} : Date{1, kMidYear};
    return date.has_value();
}

BlockArray Binder::shortWave(const DayTable& Rpot, Temperatures temperatures) {
    dates();
    const BlockArray array = newArray();
    if (failed_) return array;
    notes_.radiationUnits.push_back({notes_.task, &Rpot, temperatures, array});
    notes_.radiationUnits.back().radiate(thisStep(), 0);
    return array;
}

void Binder::fillOnFirstUse(DayTable& Rpot) {
    if (!failed_) ::fillOnFirstUse(Globals_, Rpot);
}

void Binder::canStop() {
    notes_.canStop = true;
}

void Binder::error(const char* text) {
    if (!failed_) ::error(Globals_, text);
    failed_ = true;
}

BlockArray Binder::handedOver() {
    if (!notes_.handedOver) notes_.handedOver = newArray();
    return *notes_.handedOver;
}

BlockArray Binder::newArray() {
    notes_.arrays.push_back(0.0F);
    return {static_cast<std::ptrdiff_t>(notes_.arrays.size()) - 1};
}

void Binder::note(const void* memory, bool writes) {
    if (memory) notes_.accesses.push_back({memory, notes_.task, writes});
}
