#include "components/model.h"

#include "calendar.h"
#include "errors.h"

const ComponentRow* Binder::find(std::int32_t id) {
    const ComponentRow* const row = failed_ ? nullptr : lookups_.findRow(id);
    if (!row) failed_ = true;
    return row;
}

const ComponentRow* Binder::findReservoir(const ComponentRow* after) {
    return failed_ ? nullptr : lookups_.findReservoir(row_, after);
}

const float* Binder::now(Series kind, std::int32_t id) {
    const float* const values = failed_ ? nullptr : lookups_.findSeries(kind, id);
    if (!values || !checkStep(Globals_, Globals_->CurStep, id)) failed_ = true;
    return values;
}

const float* Binder::before(Series kind, std::int32_t id) {
    const float* const values = failed_ ? nullptr : lookups_.findSeries(kind, id);
    const std::int32_t step = Globals_->CurStep > 0 ? Globals_->CurStep - 1 : Globals_->CurStep;
    if (!values || !checkStep(Globals_, step, id)) failed_ = true;
    note(values, false);
    return values;
}

float* Binder::after(Series kind) {
    float* const values = failed_ ? nullptr : lookups_.writableSeries(kind, id());
    if (!values || !checkStep(Globals_, Globals_->CurStep, id())) failed_ = true;
    note(values, true);
    return values;
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
    float* const values = lookups_.writableSeries(kind, key());
    if (!values) failed_ = true;
    return isInside(Globals_, Globals_->CurStep) ? values : nullptr;
}

const float* Binder::multiplier() {
    if (failed_) return nullptr;
    const auto factors = lookups_.findMultiplier(id());
    if (!factors || (*factors && !checkStep(Globals_, Globals_->CurStep, id()))) failed_ = true;
    return factors.value_or(nullptr);
}

const float* Binder::frequencies(std::int32_t group, std::int32_t kind, std::int32_t mostKinds) {
    const float* const values = failed_ ? nullptr : lookups_.findFrequencies(group);
    if (!values) failed_ = true;
    if (kind < 1 || kind > mostKinds) error(text::kApplianceKind);
    checkStepOf(group);
    return values;
}

Temperatures Binder::temperatures() {
    const float* const tMin = ofKey(Series::Tmin);
    const float* const tMax = ofKey(Series::Tmax);
    if (!failed_ && tMin[Globals_->CurStep] > tMax[Globals_->CurStep]) error(text::kTemperatures);
    if (!failed_ && notes_) notes_->temperatures.push_back({tMin, tMax});
    return {tMin, tMax};
}

bool Binder::dates() {
    if (failed_) return false;
    if (notes_) {
        notes_->needsDates = true;
        return true;
    }
    const auto date = calendarOfStep(Globals_);
    date_ = date ? Date{date->tm_mday, date->tm_yday} : Date{1, kMidYear};
    return date.has_value();
}

BlockArray Binder::shortWave(const DayTable& Rpot, Temperatures temperatures) {
    dates();
    if (notes_) {
        const BlockArray array{notes_->blockArrays++};
        notes_->radiationUnits.push_back({&Rpot, temperatures, array});
        return array;
    }
    const BlockArray array{1};
    if (failed_) return array;
    const std::int32_t k = Globals_->CurStep;
    const float Ra = insolationofthisstep(Rpot, date_.dayOfYear);
    *thisStep().part(array) = directbeamsolar(Ra, temperatures.tMin[k], temperatures.tMax[k]);
    return array;
}

void Binder::fillOnFirstUse(DayTable& Rpot) {
    if (!failed_) ::fillOnFirstUse(Globals_, Rpot);
}

void Binder::canStop() {
    if (notes_) notes_->canStop = true;
}

void Binder::error(const char* text) {
    if (!failed_) ::error(Globals_, text);
    failed_ = true;
}

BlockArray Binder::handedOver() {
    if (!notes_) return {};
    if (!notes_->handedOver) notes_->handedOver = BlockArray{notes_->blockArrays++};
    return *notes_->handedOver;
}

void Binder::note(const void* memory, bool writes) {
    if (notes_ && memory) notes_->accesses.push_back({memory, notes_->task, writes});
}
