// Pieces of work, each done in a process of its own that works on a copy of this one's memory, several at a time.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine_process.h"

namespace kesto {

// To copy a process is a good part of what a small piece costs. So the copies are not made by this process, one after
// the other, but side by side by jobs: processes forked once, each of which does one piece after the other in a
// process that it forks. Rooms with pieces that wait keep the jobs busy while this process takes what others have left.
class ProcessPool {
  public:
    // In the process: puts what is to be handed over into the room, and returns its length. `told` is what the piece
    // was started with.
    using Work = std::function<std::size_t(std::size_t number, const std::string& told, std::span<char> room)>;

    // So many pieces at once; memory of the room is taken only as far as it is used. The copies are of this process as
    // it is now. Throws std::runtime_error when no process can be started.
    ProcessPool(std::size_t jobs, std::size_t room, Work work);

    bool isFull() const { return free_.empty(); }
    bool isIdle() const { return free_.size() == rooms_.size(); }

    // There must be a free room. What is told must fit into it.
    void start(std::size_t number, std::string_view told = {});

    struct Done {
        std::size_t number;
        bool isWhole;            // false: the process died before it had handed anything over
        std::string_view given;  // valid until the next start
        std::string lastWords;   // of a process that died
    };

    // One that has ended, waiting for so long at most. Throws std::runtime_error when a job has died and cannot be
    // started again.
    std::optional<Done> next(int milliseconds);

  private:
    static constexpr std::size_t kLongestWords = 4096;

    // Shared by all processes.
    struct Piece {
        std::atomic<int> state;
        std::size_t number;
        std::size_t bytes;  // of the room that are used: by what is told, then by what is handed over
        bool isWhole;
        std::size_t wordsLength;
        char words[kLongestWords];  // of a process that died
    };

    struct Room {
        explicit Room(std::size_t bytes);
        void setWords(const std::string& words);

        std::unique_ptr<SharedMemory> memory;
        Piece* piece;
        std::span<char> space;
    };

    void startJob(std::size_t job);
    void serve(std::size_t job);      // in the job, until it is ended
    Room* takeRoom(std::size_t job);  // the first that waits; null: none does
    void doPiece(Room& room);
    void run(Room& room);  // in the process of a piece
    void loseJob(std::size_t job);
    std::optional<Done> ended();

    Work work_;
    Bell orders_, news_;
    std::vector<Room> rooms_;
    std::vector<std::size_t> free_;                    // indices of rooms
    std::vector<std::unique_ptr<ChildProcess>> jobs_;  // ended with the pool, and with them what they run
};

}  // namespace kesto
