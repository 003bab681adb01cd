#include "process_pool.h"

#include <iostream>
#include <new>
#include <stdexcept>
#include <utility>

namespace kesto {

ProcessPool::ProcessPool(std::size_t most, std::size_t room, Work work) : work_(std::move(work)), seats_(most) {
    for (std::size_t i = 0; i < most; ++i) {
        Seat& seat = seats_[i];
        seat.memory =
            std::make_unique<SharedMemory>(SharedMemory::rounded(sizeof(Handed)) + SharedMemory::rounded(room));
        seat.handed = seat.memory->take<Handed>(1);
        seat.room = {seat.memory->take<char>(room), room};
        free_.push_back(most - 1 - i);
    }
}

void ProcessPool::start(std::size_t number) {
    Seat& seat = seats_[free_.back()];
    *seat.handed = {};
    const auto run = [&]() -> std::string {
        try {
            const std::size_t bytes = work_(number, seat.room);
            *seat.handed = {bytes, true};
        } catch (const std::bad_alloc&) {
            std::cerr << "memory ran out";
        } catch (const std::exception& error) {
            std::cerr << error.what();
        }
        std::cerr.flush();
        return {};
    };
    seat.child = std::make_unique<ChildProcess>(ChildWork{.run = run, .leavesStopping = true});
    seat.number = number;
    free_.pop_back();
}

std::optional<ProcessPool::Done> ProcessPool::next(int milliseconds) {
    std::vector<const ChildProcess*> running;
    for (const Seat& seat : seats_) {
        if (seat.child) running.push_back(seat.child.get());
    }
    if (running.empty()) return std::nullopt;
    ChildProcess::waitForAny(running, milliseconds);
    for (std::size_t i = 0; i < seats_.size(); ++i) {
        Seat& seat = seats_[i];
        if (!seat.child || seat.child->wait(0)) continue;
        const std::unique_ptr<ChildProcess> child = std::move(seat.child);
        free_.push_back(i);
        const Handed& handed = *seat.handed;
        Done done{seat.number, handed.isWhole, {}, {}};
        if (handed.isWhole) {
            done.given = {seat.room.data(), handed.bytes};
        } else {
            done.lastWords = child->lastWords();
        }
        return done;
    }
    return std::nullopt;
}

}  // namespace kesto
