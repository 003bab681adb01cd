// Pieces of work, each done in a process of its own that works on a copy of this one's memory, several at a time.
#pragma once

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

class ProcessPool {
  public:
    // In the process: puts what is to be handed over into the room, and returns its length.
    using Work = std::function<std::size_t(std::size_t number, std::span<char> room)>;

    // So many processes at most; memory of the room is taken only as far as it is used.
    ProcessPool(std::size_t most, std::size_t room, Work work);

    bool isFull() const { return free_.empty(); }
    bool isIdle() const { return free_.size() == seats_.size(); }

    // There must be a free place. Throws std::runtime_error when no process can be started.
    void start(std::size_t number);

    struct Done {
        std::size_t number;
        bool isWhole;            // false: the process died before it had handed anything over
        std::string_view given;  // valid until the next start
        std::string lastWords;   // of a process that died
    };

    // One that has ended, waiting for so long at most.
    std::optional<Done> next(int milliseconds);

  private:
    struct Handed {
        std::size_t bytes;
        bool isWhole;
    };
    struct Seat {
        std::unique_ptr<SharedMemory> memory;
        Handed* handed;
        std::span<char> room;
        std::unique_ptr<ChildProcess> child;
        std::size_t number = 0;
    };

    Work work_;
    std::vector<Seat> seats_;
    std::vector<std::size_t> free_;  // indices of seats
};

}  // namespace kesto
