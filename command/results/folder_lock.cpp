#include "folder_lock.h"

#include <fmt/format.h>

#include <filesystem>
#include <system_error>

#include "files.h"

namespace kesto {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const std::string& path, const std::error_code& error) {
    throw std::runtime_error(fmt::format("cannot write {}: {}", path, reasonOf(error)));
}

// A run that ends meanwhile may remove the hidden folder between two calls.
std::unique_ptr<FileLock> lockIn(const std::string& hidden) {
    constexpr int kTries = 100;
    for (int i = 0;; ++i) {
        std::error_code error;
        fs::create_directory(pathOf(hidden), error);
        if (error) fail(hidden, error);
        try {
            // A link to a folder elsewhere is not followed.
            if (fs::symlink_status(pathOf(hidden)).type() == fs::file_type::symlink) {
                fail(hidden, std::make_error_code(std::errc::not_a_directory));
            }
            return std::make_unique<FileLock>(joined(hidden, kLockFile));
        } catch (const std::system_error& failure) {
            if (failure.code() != std::errc::no_such_file_or_directory || i == kTries) {
                fail(joined(hidden, kLockFile), failure.code());
            }
        }
    }
}

}  // namespace

std::unique_ptr<FileLock> lockFolder(const std::string& folder, const std::string& hidden) {
    auto lock = lockIn(joined(folder, hidden));
    if (lock->isHeld()) return lock;
    const std::string who = lock->holder() > 0 ? fmt::format("process {}", lock->holder()) : "another process";
    throw FolderBusy(fmt::format("{} is writing results into {}; wait for it, or choose another folder", who, folder));
}

}  // namespace kesto
