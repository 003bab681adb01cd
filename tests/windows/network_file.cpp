#include "network_file.h"

#include <bit>
#include <concepts>
#include <istream>
#include <ostream>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace {

constexpr const char* kMark = "kesto-network-2";

class Writer {
  public:
    explicit Writer(std::ostream& out) : out_(out) {}
    template <std::integral T>
    void item(const T& value) {
        out_ << value << ' ';
    }
    void item(const float& value) { out_ << std::bit_cast<std::uint32_t>(value) << ' '; }
    template <class T>
    std::size_t size(const std::vector<T>& values) {
        out_ << '\n' << values.size() << ' ';
        return values.size();
    }

  private:
    std::ostream& out_;
};

class Reader {
  public:
    explicit Reader(std::istream& in) : in_(in) {}
    template <std::integral T>
    void item(T& value) {
        value = read<T>();
    }
    void item(float& value) { value = std::bit_cast<float>(read<std::uint32_t>()); }
    template <class T>
    std::size_t size(std::vector<T>& values) {
        values.resize(read<std::size_t>());
        return values.size();
    }

  private:
    template <class T>
    T read() {
        T value{};
        if (!(in_ >> value)) throw std::runtime_error("this is no file of a network, or not a whole one");
        return value;
    }
    std::istream& in_;
};

template <class Value, class Archive>
void list(Archive& archive, Value& values) {
    archive.size(values);
    for (auto& value : values)
        archive.item(value);
}

template <class Archive, class Row, class... Fields>
void rows(Archive& archive, Row& table, Fields... fields) {
    archive.size(table);
    for (auto& row : table)
        (archive.item(row.*fields), ...);
}

void tableOf(Writer& writer, Table table) {
    writer.item(static_cast<std::int32_t>(table));
}
void tableOf(Reader& reader, Table& table) {
    std::int32_t number = 0;
    reader.item(number);
    table = static_cast<Table>(number);
}

// One order for both directions.
template <class Archive, class Network>
void pass(Archive& archive, Network& network) {
    auto& model = network.model;
    for (auto* number : {&model.StartTime, &model.nSteps, &model.StopOnInfeas, &model.BuildTree})
        archive.item(*number);
    archive.item(model.TimeStep);
    archive.item(model.Latitude);
    list(archive, model.pots);
    using S = SpecificationRow;
    rows(archive, model.specifications, &S::host0, &S::host1, &S::brand, &S::host3, &S::select1, &S::select2,
         &S::number, &S::value, &S::host8);
    using C = ComponentRow;
    rows(archive, model.components, &C::id, &C::techid, &C::key, &C::brand, &C::size);
    using N = ConnectionRow;
    rows(archive, model.connections, &N::link, &N::senderId, &N::senderPort, &N::receiverId, &N::receiverPort);
    for (auto& table : model.series) {
        archive.size(table);
        for (auto& series : table) {
            archive.item(series.id);
            list(archive, series.values);
        }
    }
    archive.size(model.splits);
    for (auto& split : model.splits) {
        archive.item(split.id);
        archive.item(split.beta);
        list(archive, split.members);
    }
    archive.size(network.overlaps);
    for (auto& overlap : network.overlaps) {
        tableOf(archive, overlap.table);
        tableOf(archive, overlap.other);
        for (auto* number : {&overlap.entry, &overlap.otherEntry, &overlap.elements})
            archive.item(*number);
    }
    using Call = std::pair<std::int32_t, std::int32_t>;
    rows(archive, network.calls, &Call::first, &Call::second);
}

}  // namespace

void write(std::ostream& out, const RandomModel& network) {
    out << kMark << '\n';
    Writer writer(out);
    pass(writer, network);
    out << '\n';
}

RandomModel readNetwork(std::istream& in) {
    std::string mark;
    if (!(in >> mark) || mark != kMark) throw std::runtime_error("this is no file of a network");
    RandomModel network;
    Reader reader(in);
    pass(reader, network);
    return network;
}
