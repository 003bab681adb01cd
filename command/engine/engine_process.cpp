#include "engine_process.h"

namespace kesto {

std::string ChildProcess::lastWords() const {
    const std::string words = errors_.substr(0, errors_.find_last_not_of('\n') + 1);
    return words.empty() ? fault_ : words;
}

}  // namespace kesto
