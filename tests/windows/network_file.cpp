#include "network_file.h"

#include <bit>
#include <istream>
#include <ostream>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace {

constexpr const char* kMark = "kesto-network-1";

class Writer {
  public:
    explicit Writer(std::ostream& out) : out_(out) {}
    void item(const std::int32_t& value) { out_ << value << ' '; }
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
    void item(std::int32_t& value) { value = read<std::int32_t>(); }
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

// One order for both directions.
template <class Archive, class Call>
void pass(Archive& archive, Call& call) {
    auto& model = call.model;
    for (auto* number :
         {&call.first, &call.last, &model.StartTime, &model.nSteps, &model.StopOnInfeas, &model.BuildTree})
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
}

}  // namespace

void write(std::ostream& out, const NetworkCall& call) {
    out << kMark << '\n';
    Writer writer(out);
    pass(writer, call);
    out << '\n';
}

NetworkCall readNetworkCall(std::istream& in) {
    std::string mark;
    if (!(in >> mark) || mark != kMark) throw std::runtime_error("this is no file of a network");
    NetworkCall call;
    Reader reader(in);
    pass(reader, call);
    return call;
}
