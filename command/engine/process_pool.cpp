#include "process_pool.h"

#include <algorithm>
#include <iostream>
#include <new>
#include <stdexcept>
#include <utility>

namespace kesto {

namespace {

// How a piece stands: it waits, a job has it (the number of the job), or it has ended.
constexpr int kWaiting = -1, kEnded = -2, kNone = -3;

constexpr std::size_t kRoomsPerJob = 2;

}  // namespace

ProcessPool::Room::Room(std::size_t bytes)
    : memory(std::make_unique<SharedMemory>(SharedMemory::rounded(sizeof(Piece)) + SharedMemory::rounded(bytes))),
      piece(new (memory->take<Piece>(1)) Piece{kNone, 0, 0, false, 0, {}}),
      space(memory->take<char>(bytes), bytes) {}

void ProcessPool::Room::setWords(const std::string& words) {
    piece->wordsLength = std::min(words.size(), kLongestWords);
    std::copy_n(words.begin(), piece->wordsLength, piece->words);
}

ProcessPool::ProcessPool(std::size_t jobs, std::size_t room, Work work) : work_(std::move(work)), jobs_(jobs) {
    rooms_.reserve(kRoomsPerJob * jobs);
    while (rooms_.size() < rooms_.capacity()) {
        free_.push_back(rooms_.size());
        rooms_.emplace_back(room);
    }
    for (std::size_t job = 0; job < jobs; ++job) {
        startJob(job);
    }
}

void ProcessPool::startJob(std::size_t job) {
    const auto run = [this, job]() -> std::string {
        serve(job);
        return {};
    };
    jobs_[job] = std::make_unique<ChildProcess>(ChildWork{.run = run, .leavesStopping = true});
}

void ProcessPool::start(std::size_t number, std::string_view told) {
    Room& room = rooms_[free_.back()];
    free_.pop_back();
    Piece& piece = *room.piece;
    piece.number = number;
    piece.bytes = told.copy(room.space.data(), room.space.size());
    piece.wordsLength = 0;
    piece.isWhole = false;
    piece.state = kWaiting;
    orders_.ring();
}

ProcessPool::Room* ProcessPool::takeRoom(std::size_t job) {
    for (;;) {
        Room* first = nullptr;
        for (Room& room : rooms_) {
            if (room.piece->state != kWaiting) continue;
            if (!first || room.piece->number < first->piece->number) first = &room;
        }
        int waiting = kWaiting;
        if (!first || first->piece->state.compare_exchange_strong(waiting, static_cast<int>(job))) return first;
    }
}

// Looks for more after each piece: another job may take the one that this job was rung for, and leave it the other's.
void ProcessPool::serve(std::size_t job) {
    for (;;) {
        orders_.wait();
        while (Room* const room = takeRoom(job)) {
            doPiece(*room);
            room->piece->state = kEnded;
            news_.ring();
        }
    }
}

void ProcessPool::doPiece(Room& room) {
    const auto work = [&]() -> std::string {
        run(room);
        return {};
    };
    try {
        ChildProcess child({.run = work, .leavesStopping = true});
        while (child.wait(ChildProcess::kForever)) {
        }
        if (!room.piece->isWhole) room.setWords(child.lastWords());
    } catch (const std::exception& error) {
        room.setWords(error.what());
    }
}

void ProcessPool::run(Room& room) {
    try {
        const std::string told(room.space.data(), room.piece->bytes);
        room.piece->bytes = work_(room.piece->number, told, room.space);
        room.piece->isWhole = true;
    } catch (const std::bad_alloc&) {
        std::cerr << "memory ran out";
    } catch (const std::exception& error) {
        std::cerr << error.what();
    }
    std::cerr.flush();
}

std::optional<ProcessPool::Done> ProcessPool::ended() {
    for (std::size_t i = 0; i < rooms_.size(); ++i) {
        Piece& piece = *rooms_[i].piece;
        if (piece.state != kEnded) continue;
        piece.state = kNone;
        free_.push_back(i);
        return Done{piece.number,
                    piece.isWhole,
                    {rooms_[i].space.data(), piece.bytes},
                    std::string(piece.words, piece.wordsLength)};
    }
    return std::nullopt;
}

// What it had is lost with it; what it may have been rung for is not.
void ProcessPool::loseJob(std::size_t job) {
    for (Room& room : rooms_) {
        if (room.piece->state != static_cast<int>(job)) continue;
        room.setWords(jobs_[job]->lastWords());
        room.piece->isWhole = false;
        room.piece->state = kEnded;
    }
    startJob(job);
    orders_.ring();
}

std::optional<ProcessPool::Done> ProcessPool::next(int milliseconds) {
    if (isIdle()) return std::nullopt;
    std::vector<const ChildProcess*> jobs;
    for (const auto& job : jobs_) {
        jobs.push_back(job.get());
    }
    if (std::optional<Done> done = ended()) return done;
    ChildProcess::waitForAny(jobs, news_, milliseconds);
    for (std::size_t job = 0; job < jobs_.size(); ++job) {
        if (!jobs_[job]->wait(0)) loseJob(job);
    }
    return ended();
}

}  // namespace kesto
