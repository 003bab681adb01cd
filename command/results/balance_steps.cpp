#include "balance_steps.h"

namespace kesto {

namespace {

// As the engine gets it.
double single(double value) {
    return static_cast<double>(static_cast<float>(value));
}

double valueOf(const std::shared_ptr<const Floats>& values, std::size_t step) {
    return values ? static_cast<double>((*values)[step]) : 0;
}

}  // namespace

BalanceInputs::BalanceInputs(const Recorded& recorded, int index) : stored_(recorded.type(index).balance.stored) {
    const Model& model = recorded.model();
    const Component& component = recorded.component(index);
    for (const Parameter& known : component.type->parameters) {
        const auto number = static_cast<std::size_t>(known.number);
        if (parameters_.size() <= number) parameters_.resize(number + 1, 0);
        parameters_[number] = single(known.standard.value_or(0));
        if (component.brand < 0) continue;
        const auto& given = model.brands[at(component.brand)].specifications;
        const auto found = given.find(known.number);
        if (found != given.end()) parameters_[number] = single(found->second.value);
    }
    constant_.size =
        single(component.hasSize ? component.size : component.type->size.standard.value_or(component.size));
    constant_.timeStep = single(model.simulation.timeStep);
    constant_.parameters = parameters_;
}

double BalanceInputs::litresPerUnit() const {
    switch (stored_) {
        case Stored::depth:
            return constant_.size;
        case Stored::nothing:
        case Stored::underWay:
            return 0;
        case Stored::litres:
        case Stored::depthOfOneMetre2:
            break;
    }
    return 1;
}

BalanceSteps::BalanceSteps(const Recorded& recorded, int component, const std::vector<int>& inputs, int copies)
    : BalanceInputs(recorded, component),
      stored_(recorded.storage(component)),
      insolation_(recorded.insolation()),
      rain_(recorded.ofGroup(component, SeriesKind::rainfall)),
      temperature_(recorded.ofGroup(component, SeriesKind::temperature)),
      lowest_(recorded.ofGroup(component, SeriesKind::temperatureMin)),
      highest_(recorded.ofGroup(component, SeriesKind::temperatureMax)) {
    current_.copies = copies;
    current_.after = recorded.storedAtFirst(component);
    for (const SeriesKind kind : {SeriesKind::multiplier, SeriesKind::demand}) {
        const SourceIndex source = recorded.component(component).series[kind];
        if (source >= 0) given_ = recorded.series().of(source);
    }
    for (const int index : inputs) {
        const Connection& connection = recorded.connection(index);
        addLine(in_, recorded.signals(connection.from, connection.fromPort), connection.toPort == 2 ? 2 : 1);
    }
    for (int port = 1; port <= recorded.outputs(component); ++port) {
        addLine(out_, recorded.signals(component, port), port);
    }
    addLine(out_, recorded.signals(component, 0), 1);
}

void BalanceSteps::addLine(std::vector<Line>& lines, const Signal* signals, int port) {
    if (signals) lines.push_back({signals, at(port) - 1});
}

const BalanceStep& BalanceSteps::next() {
    current_.rain = valueOf(rain_, step_);
    current_.temperature = valueOf(temperature_, step_);
    current_.temperatureMin = valueOf(lowest_, step_);
    current_.temperatureMax = valueOf(highest_, step_);
    current_.given = valueOf(given_, step_);
    current_.insolation = step_ < insolation_.size() ? insolation_[step_] : 0;
    current_.in = {};
    current_.out = {};
    for (const Line& line : in_) {
        current_.in[line.port] += amount(line.signals[step_]);
    }
    for (const Line& line : out_) {
        current_.out[line.port] = amount(line.signals[step_]);
    }
    current_.before = current_.after;
    if (stored_) current_.after = static_cast<double>(stored_[step_]);
    ++step_;
    return current_;
}

}  // namespace kesto
