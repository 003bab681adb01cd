// Multipliers: they scale the potentials of all that lies upstream of them.
//
// From each component a walk follows the first listed connection that each component sends, at most 1000001 of them,
// and collects the multipliers that it meets. Since only one path leads on from each component, the first multiplier
// met settles all that follow; its id and the length identify a list. On a cycle the walk goes round and round: a
// multiplier on it is met once a round.

#include <cstring>
#include <map>
#include <new>
#include <set>

#include "components/lookup.h"
#include "components/type_codes.h"
#include "errors.h"
#include "simulation.h"

namespace {

constexpr std::int32_t kMostSteps = 1000001;

// The first multiplier downstream of a component and how many connections lead there.
struct Hop {
    std::int32_t multiplier;
    std::int32_t distance;  // 0: there is none
};

// A multiplier met on a walk: how many that makes and how many steps are left.
struct Met {
    std::int32_t multiplier;
    std::int32_t length;
    std::int32_t left;
};

// How many multipliers come after a multiplier and how many steps lead to the last one. Only where there is a last one.
struct Tail {
    std::int32_t length;
    std::int32_t steps;
};

class Walks {
  public:
    explicit Walks(AUEglobals* Globals) : Globals_(Globals) {
        types_.reserve(static_cast<std::size_t>(Globals->nComps));
        hops_.reserve(static_cast<std::size_t>(Globals->nComps));
        receivers_.reserve(static_cast<std::size_t>(Globals->nConns));
        for (std::int32_t i = 0; i < Globals->nComps; ++i) {
            const ComponentRow& row = Globals->Net_Compnt[i];
            // Not a number equals no id; thousands of them would fill one place of the table.
            if (row.id == row.id) types_.try_emplace(row.id, nint(row.techid));
        }
        for (std::int32_t i = 0; i < Globals->nConns; ++i) {
            receivers_.try_emplace(Globals->Net_Conn[i].senderId, Globals->Net_Conn[i].receiverId);
        }
    }

    // The multipliers downstream of a component. Sets ErrFlag when a connection leads to an unknown id.
    MultiplierList list(std::int32_t id) {
        MultiplierList list;
        std::vector<Met> mets;
        std::int32_t left = kMostSteps;
        Met before{};  // one of them, ever later, to notice when the walk comes round
        bool roundsSkipped = false;
        while (true) {
            const Hop hop = firstMultiplier(id);
            if (Globals_->ErrFlag == 1 || hop.distance > left) return list;
            if (hop.distance == 0) break;
            if (list.length == 0) {
                list.first = hop.multiplier;
            } else {
                next_.try_emplace(id, hop.multiplier);
            }
            id = hop.multiplier;
            left -= hop.distance;
            ++list.length;
            const auto tail = tails_.find(id);
            if (tail != tails_.end() && tail->second.steps <= left) {
                list.length += tail->second.length;
                left -= tail->second.steps;
                break;
            }
            mets.push_back({id, list.length, left});
            if (roundsSkipped) continue;
            if (before.length > 0 && id == before.multiplier) {
                skipRounds(before, list, left);
                roundsSkipped = true;
            } else if (mets.size() >= 2 * static_cast<std::size_t>(before.length)) {
                before = mets.back();
            }
        }
        for (const Met& met : mets)
            tails_.try_emplace(met.multiplier, Tail{list.length - met.length, met.left - left});
        return list;
    }

    NextMultiplier takeNext() { return std::move(next_); }

  private:
    // Of a walk that is back at a multiplier met before: whole rounds, as many as there are steps for.
    static void skipRounds(const Met& before, MultiplierList& list, std::int32_t& left) {
        const std::int32_t perRound = list.length - before.length;
        const std::int32_t roundSteps = before.left - left;
        list.length += left / roundSteps * perRound;
        left %= roundSteps;
    }

    Hop firstMultiplier(std::int32_t start) {
        std::vector<std::int32_t> path;
        Hop hop{0, 0};
        bool found = false;
        for (std::int32_t id = start;;) {
            if (const auto known = hops_.find(id); known != hops_.end()) {
                hop = known->second;
                found = hop.distance > 0;
                break;
            }
            path.push_back(id);
            hops_[id] = {0, 0};  // what stands when the walk comes round to here without a multiplier
            const auto next = receivers_.find(id);
            if (next == receivers_.end()) break;
            id = next->second;
            const auto type = types_.find(static_cast<float>(id));
            if (type == types_.end()) {
                fail(Globals_, text::kIdNotFound);
                return {0, 0};
            }
            if (type->second == code::kMultiplier) {
                hop.multiplier = id;
                found = true;
                break;
            }
        }
        for (auto id = path.rbegin(); id != path.rend(); ++id) {
            if (found) ++hop.distance;
            hops_[*id] = hop;
        }
        return hops_[start];
    }

    AUEglobals* Globals_;
    std::unordered_map<float, std::int32_t> types_;
    std::unordered_map<std::int32_t, std::int32_t> receivers_;
    std::unordered_map<std::int32_t, Hop> hops_;
    std::unordered_map<std::int32_t, Tail> tails_;
    NextMultiplier next_;
};

void multiply(std::vector<float>& values, const float* factors) {
    for (std::size_t k = 0; k < values.size(); ++k)
        values[k] *= factors[k];
}

// The product of a list, factor by factor in the order met. A list of a million factors is a cycle: after some rounds
// nothing changes any more (0, infinity, a fixed point) or the values come round, and what is left of whole rounds is
// skipped. That changes no bit.
bool multiplyList(AUEglobals* Globals, const SeriesFinder& finder, const MultiplierList& list,
                  const NextMultiplier& next, std::vector<float>& values) {
    std::vector<float> remembered;
    std::int32_t rememberedId = 0;
    std::int32_t rememberedAt = 0;
    std::int32_t rememberNext = 1024;  // lists without a cycle rarely get there
    std::int32_t id = list.first;
    for (std::int32_t done = 0; done < list.length;) {
        const auto factors = findSeries(Globals, Series::Multpls, finder, id);
        if (!factors) return false;
        multiply(values, *factors);
        if (++done == list.length) break;
        id = next.at(id);
        if (!remembered.empty() && id == rememberedId &&
            std::memcmp(remembered.data(), values.data(), values.size() * sizeof(float)) == 0) {
            const std::int32_t round = done - rememberedAt;
            done += (list.length - done) / round * round;
            remembered.clear();
        } else if (done == rememberNext) {
            remembered = values;
            rememberedId = id;
            rememberedAt = done;
            rememberNext *= 2;
        }
    }
    return true;
}

}  // namespace

void getCompsMultipliers(AUEglobals* Globals, const std::vector<std::int32_t>& CompntId, MultIds& multIds) {
    const char* what = "MultIds";
    try {
        multIds.lists.reserve(CompntId.size());
        what = "MultIds[icomp]";
        Walks walks(Globals);
        for (const std::int32_t id : CompntId) {
            multIds.lists.push_back(walks.list(id));
            if (Globals->ErrFlag == 1) return;
        }
        multIds.next = walks.takeNext();
    } catch (const std::bad_alloc&) {
        fail(Globals, text::kNoMemory, what);
    }
}

std::int32_t getListUniqStrings(const MultIds& multIds, std::vector<MultiplierList>& unique) try {
    std::set<MultiplierList> seen;
    for (const MultiplierList& list : multIds.lists) {
        if (list.length > 0 && seen.insert(list).second) unique.push_back(list);
    }
    return static_cast<std::int32_t>(unique.size());
} catch (const std::bad_alloc&) {
    return KESTO_RUN_FAILURE;
}

bool linkCompsUniqMultSeqs(const MultIds& multIds, const std::vector<MultiplierList>& unique,
                           std::vector<std::int32_t>& SeqId) try {
    std::map<MultiplierList, std::int32_t> indices;
    for (const MultiplierList& list : unique)
        indices.try_emplace(list, static_cast<std::int32_t>(indices.size()));
    SeqId.reserve(multIds.lists.size());
    for (const MultiplierList& list : multIds.lists) {
        // Missing when memory ran short before all distinct lists were found.
        const auto index = indices.find(list);
        SeqId.push_back(index != indices.end() ? index->second : -1);
    }
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

void CombineMult(AUEglobals* Globals, const MultIds& multIds, const std::vector<MultiplierList>& unique,
                 std::vector<MultiplierSeries>& TotNumComp) {
    if (Globals->ErrFlag == 1) return;
    const char* what = "Lookups";
    try {
        const SeriesFinder finder(Globals->Multpls, Globals->nMultpls);
        what = "TotNumComp";
        TotNumComp.reserve(unique.size());
        what = "TotNumComp[i].Value";
        for (const MultiplierList& list : unique) {
            if (Globals->nSteps < 0) throw std::bad_alloc();
            const auto index = static_cast<std::int32_t>(TotNumComp.size());
            TotNumComp.push_back({index, std::vector<float>(static_cast<std::size_t>(Globals->nSteps), 1.0F)});
            if (!multiplyList(Globals, finder, list, multIds.next, TotNumComp.back().Value)) return;
        }
    } catch (const std::bad_alloc&) {
        fail(Globals, text::kNoMemory, what);
    }
}
