// Any bytes as a model file: read and checked, or refused with a word.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "checks.h"
#include "model_reader.h"

namespace {

// A file of this process alone, so that the reader has a path to open.
const std::string& modelPath() {
    static const int file = memfd_create("model.toml", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(file);
    return path;
}

bool writeModel(const std::uint8_t* data, std::size_t size) {
    return truncate(modelPath().c_str(), 0) == 0 && [&] {
        std::FILE* const out = std::fopen(modelPath().c_str(), "wb");
        if (!out) return false;
        const bool isWritten = std::fwrite(data, 1, size, out) == size;
        return std::fclose(out) == 0 && isWritten;
    }();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (text.find("/dev") != std::string_view::npos) return 0;  // a device may never end
    if (!writeModel(data, size)) __builtin_trap();
    kesto::Diagnostics diagnostics;
    const auto model = kesto::readModel(modelPath(), diagnostics);
    if (!model && !diagnostics.hasErrors()) __builtin_trap();
    if (!model || model->simulation.days() > 4000) return 0;  // long series would only take time
    kesto::SeriesValues series(*model, diagnostics);
    kesto::checkModel(*model, series, diagnostics);
    return 0;
}
