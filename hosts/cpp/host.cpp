// A host in C++: a roof fills a tank that a garden draws from, for eight days. The tables are vectors, and the outputs
// are given back when the object that holds the record goes.
//
//   c++ -std=c++20 hosts/cpp/host.cpp -Isrc -Lbuild/release -lKESTO -Wl,-rpath,build/release -o build/cpp-host
//   build/cpp-host

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "AUEglobals.h"

namespace {

constexpr int kDays = 8;
enum Id { kGroup = 1, kRoof = 11, kTank = 12, kGarden = 13, kMains = 14, kSpill = 15 };
enum Brand { kRoofing = 1, kNoCost = 2, kNoSuchBrand = 9 };

class Network {
  public:
    explicit Network(Brand roofing) {
        // id, type, group, brand, size
        components_ = {
            {kRoof, 28, kGroup, static_cast<float>(roofing), 80},  // m²
            {kGarden, 45, kGroup, 0, 100},                         // percent of its demand
            {kTank, 32, kGroup, kNoCost, 500},                     // L
            {kMains, 26, 0, 0, 0},                                 // loggers
            {kSpill, 26, 0, 0, 0},
        };
        fill(record_.Net_Compnt, record_.nComps, components_);
        fill(record_.Net_Conn, record_.nConns, connections_);
        fill(record_.TechSpecs, record_.nTechSpecs, specifications_);
        fill(record_.PotCompIds, record_.nPotComps, groups_);
        fill(record_.Rainfall, record_.nRainfall, rainfall_);
        fill(record_.InsDmd, record_.nInsDmd, demands_);
        fill(record_.WatQuant, record_.nWatQuant, storages_);
        record_.nSteps = kDays;
        record_.TimeStep = 1;
    }
    // The record points into this object.
    Network(const Network&) = delete;
    Network& operator=(const Network&) = delete;
    ~Network() { FreeAUEglobals(&record_); }

    void run() {
        const auto status = KESTO_simul(&record_, 1, kDays);
        if (status != KESTO_SUCCESS)
            throw std::runtime_error(std::string(record_.ErrMsg) + " (status " + std::to_string(status) + ")");
    }

    void print() const {
        std::printf("day  rain mm  stored L   mains L  spilt L  evaporated L\n");
        for (std::size_t k = 0; k < kDays; ++k)
            std::printf(
                "%3zu %8.1f %9.1f %9.1f %8.1f %13.1f\n", k + 1, static_cast<double>(rain_[k]),
                static_cast<double>(stored_[k]), static_cast<double>(record_.Logs[0].Signal[k].quantity),
                static_cast<double>(record_.Logs[1].Signal[k].quantity) + 0.0,  // turns the -0 of a dry day into 0
                static_cast<double>(record_.EvaPot[0].Value[k]));
    }

  private:
    template <class Row>
    static void fill(Row*& table, std::int32_t& count, std::vector<Row>& rows) {
        table = rows.data();
        count = static_cast<std::int32_t>(rows.size());
    }

    std::vector<float> rain_{10, 0, 0, 2.5F, 20, 0, 0, 0};  // mm
    std::vector<float> demand_ = std::vector<float>(kDays, 200.0F);
    std::vector<float> stored_{100, 0, 0, 0, 0, 0, 0, 0};  // 100 L to begin with; the library writes over it
    std::vector<SeriesEntry> rainfall_{{kGroup, rain_.data()}};
    std::vector<SeriesEntry> demands_{{kGarden, demand_.data()}};
    std::vector<SeriesEntry> storages_{{kTank, stored_.data()}};
    std::vector<std::int32_t> groups_{kGroup};
    std::vector<ComponentRow> components_;
    // number, from, output, to, input
    std::vector<ConnectionRow> connections_{
        {1, kRoof, 1, kTank, 1},
        {2, kGarden, 1, kTank, 2},
        {3, kTank, 1, kMains, 1},  // what the tank could not give
        {4, kTank, 2, kSpill, 1},
    };
    // brand, number and value; the two selectors before the number are 1
    std::vector<SpecificationRow> specifications_{
        {0, 0, kRoofing, 0, 1, 1, 25, 5, 0},     // quality of the runoff
        {0, 0, kRoofing, 0, 1, 1, 27, 0.1F, 0},  // share that wets the roof and evaporates
        {0, 0, kNoCost, 0, 1, 1, 12, 0, 0},
        {0, 0, kNoCost, 0, 1, 1, 13, 0, 0},
    };
    AUEglobals record_{};
};

}  // namespace

int main(int argc, char** argv) {
    const bool broken = argc > 1 && std::string_view(argv[1]) == "broken";
    try {
        Network network(broken ? kNoSuchBrand : kRoofing);
        network.run();
        network.print();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "KESTO: %s\n", error.what());
        return 1;
    }
    return 0;
}
