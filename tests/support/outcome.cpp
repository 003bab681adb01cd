#include "outcome.h"

#include <algorithm>
#include <sstream>

#include "bits.h"
#include "child.h"

namespace {

std::string called(const Naming& naming, std::int32_t id) {
    return naming ? naming(id) : std::to_string(id);
}

void putResults(std::ostream& out, const AUEglobals& record, const Naming& naming) {
    forEachResult(record, [&](const Result& result) {
        out << result.name << ' ' << called(naming, result.id) << '\t';
        for (std::size_t step = 0; step < result.steps; ++step)
            out << written(result[step]) << ' ';
        out << '\n';
    });
}

void restoreStates(HostRecord& host, const Model& model) {
    for (const Table state : {Table::WatQuant, Table::WatQual})
        for (const NamedSeries& series : model.table(state))
            std::copy(series.values.begin(), series.values.end(), host.find(state, series.id));
}

// In the child: one block of lines for each call, the last being its ending.
std::string play(const Model& model, const std::vector<Call>& calls, const Naming& naming) {
    HostRecord host(model);
    std::ostringstream out;
    for (const Call& call : calls) {
        if (call.restoreStates) restoreStates(host, model);
        const std::int32_t status = host.run(call.first, call.last);
        putResults(out, host.record(), naming);
        out << "ending\t" << status << ' ' << host.record().ErrFlag << ' ' << host.record().CurStep << ' '
            << host.record().ErrMsg << ' ' << host.damage() << '\n';
        host.free();
    }
    return out.str();
}

std::vector<std::string> split(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> words;
    for (std::string word; in >> word;)
        words.push_back(word);
    return words;
}

}  // namespace

std::vector<Outcome> outcomes(const Model& model, const std::vector<Call>& calls, const Naming& naming) {
    const ChildResult child = runInChild([&] { return play(model, calls, naming); });
    if (!child.exited() || !child.stderr_.empty() || !child.stdout_.empty()) return {Outcome{{}, child.describe()}};
    std::vector<Outcome> all;
    Outcome current;
    std::istringstream in(child.answer);
    for (std::string line; std::getline(in, line);) {
        const std::size_t tab = line.find('\t');
        const std::string name = line.substr(0, tab);
        if (name == "ending") {
            current.ending = line.substr(tab + 1);
            all.push_back(current);
            current = {};
        } else {
            current.values[name] = split(line.substr(tab + 1));
        }
    }
    return all;
}

Outcome outcome(const Model& model, const Naming& naming) {
    return outcomes(model, {{1, model.nSteps}}, naming).front();
}

std::string difference(const Outcome& a, const Outcome& b) {
    std::string text;
    if (a.ending != b.ending) text += "ending: " + a.ending + " | " + b.ending + "\n";
    int shown = 0;
    for (const auto& [name, values] : a.values) {
        const auto other = b.values.find(name);
        if (other == b.values.end()) {
            text += name + ": in one only\n";
            continue;
        }
        for (std::size_t k = 0; k < values.size() && shown < 8; ++k) {
            if (values[k] == other->second[k]) continue;
            text += name + " at step " + std::to_string(k) + ": " + values[k] + " | " + other->second[k] + "\n";
            ++shown;
        }
    }
    return text;
}
