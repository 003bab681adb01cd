// Plays the calls of a random model and tells all that a host sees of them.
#ifndef KESTO_TESTS_PLAYBACK_H
#define KESTO_TESTS_PLAYBACK_H

#include <functional>
#include <string>

#include "host_record.h"
#include "random_model.h"

// Hands over what each call leaves, thing by thing: "call 1 status", "call 1 Logs quantity 0" and so on, and its text,
// floats as written() has them. The outputs are freed after each call.
// `prepare` may change the host's record before the first call.
void play(const RandomModel& random, const std::function<void(const std::string& name, const std::string& text)>& tell,
          const std::function<void(HostRecord&)>& prepare = nullptr);

#endif
