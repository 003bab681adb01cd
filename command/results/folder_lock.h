// Keeps other processes out of a folder of results.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "platform.h"

namespace kesto {

// Another process writes results into the folder; the text says which.
class FolderBusy : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

inline constexpr const char* kLockFile = "lock";

// Locks a folder, which exists, by a file in a hidden folder within it, which is made. Throws FolderBusy, or
// std::runtime_error when nothing can be written there.
std::unique_ptr<FileLock> lockFolder(const std::string& folder, const std::string& hidden);

}  // namespace kesto
