// A folder in memory, of this process alone, so that a reader has paths to open.
#pragma once

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

class ScratchFolder {
  public:
    ScratchFolder() {
        const char* const base = std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "/tmp";
        path_ = std::string(base) + "/kesto_fuzz_" + std::to_string(getpid());
        std::filesystem::create_directories(path_);
    }
    ~ScratchFolder() { std::filesystem::remove_all(path_); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::string& path() const { return path_; }

    void write(const std::string& name, std::string_view text) const {
        std::FILE* const file = std::fopen((path_ + "/" + name).c_str(), "wb");
        if (!file || std::fwrite(text.data(), 1, text.size(), file) != text.size() || std::fclose(file) != 0)
            std::abort();
    }
    void remove(const std::string& name) const { std::filesystem::remove(path_ + "/" + name); }

  private:
    std::string path_;
};
