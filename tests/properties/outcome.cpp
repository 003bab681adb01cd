#include "outcome.h"

#include <sstream>

#include "bits.h"
#include "child.h"

namespace {

std::string called(const Naming& naming, std::int32_t id) {
    return naming ? naming(id) : std::to_string(id);
}

void put(std::ostream& out, const std::string& name, std::int32_t steps, const std::function<float(std::int32_t)>& at) {
    out << name << '\t';
    for (std::int32_t step = 0; step < steps; ++step)
        out << written(at(step)) << ' ';
    out << '\n';
}

void putRecord(std::ostream& out, HostRecord& host, const Model& model, const Naming& naming) {
    const AUEglobals& record = host.record();
    const std::int32_t n = record.nSteps;
    const auto signals = [&](const char* table, const SignalSeriesEntry* entries, std::int32_t count) {
        for (std::int32_t i = 0; entries && i < count; ++i) {
            const std::string name = std::string(table) + " " + called(naming, entries[i].id);
            put(out, name + " quantity", n, [&](std::int32_t k) { return entries[i].Signal[k].quantity; });
            put(out, name + " quality", n, [&](std::int32_t k) { return entries[i].Signal[k].quality; });
        }
    };
    signals("Logs", record.Logs, record.nLogs);
    signals("WatBod", record.WatBod, record.nWatBod);
    for (const std::string_view name : kPotentialNames) {
        const SeriesEntry* const table = potentialTable(record, name);
        for (std::int32_t i = 0; table && i < record.nPotComps; ++i)
            put(out, std::string(name) + " " + called(naming, table[i].id), n,
                [&](std::int32_t k) { return table[i].Value[k]; });
    }
    for (const Table state : {Table::WatQuant, Table::WatQual}) {
        for (const NamedSeries& series : model.table(state)) {
            const float* const values = host.find(state, series.id);
            put(out, (state == Table::WatQuant ? "WatQuant " : "WatQual ") + called(naming, series.id), n,
                [&](std::int32_t k) { return values[k]; });
        }
    }
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
        putRecord(out, host, model, naming);
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
