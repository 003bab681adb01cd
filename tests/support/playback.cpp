#include "playback.h"

#include "bits.h"

void play(const RandomModel& random, const std::function<void(const std::string& name, const std::string& text)>& tell,
          const std::function<void(HostRecord&)>& prepare) {
    HostRecord host(random.model);
    for (const Overlap& overlap : random.overlaps)
        host.overlap(overlap);
    if (prepare) prepare(host);
    AUEglobals& record = host.record();
    int number = 0;
    for (const auto& [first, last] : random.calls) {
        const std::string call = "call " + std::to_string(++number) + " ";
        tell(call + "status", std::to_string(host.run(first, last)));
        tell(call + "error", std::to_string(record.ErrFlag) + " " + record.ErrMsg);
        tell(call + "step", std::to_string(record.CurStep));
        forEachResult(record, [&](const Result& result) {
            std::string text;
            for (std::size_t k = 0; k < result.steps; ++k)
                text += written(result[k]) + " ";
            tell(call + std::string(result.name) + " " + std::to_string(result.entry), text);
        });
        tell(call + "damage", host.damage());
        host.free();
        tell(call + "damage by freeing", host.damage());
        record.ErrFlag = 0;
        record.ErrMsg[0] = '\0';
    }
}
