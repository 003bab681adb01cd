// Models written for tests.
#pragma once

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "catalogue.h"

namespace kesto::test {

// The tests are those of ./test --long: more random models.
bool isLong();

// [[components]] of one type with all that it needs, named `name`, in group "g" with brand "b_NAME".
std::string componentText(const Type& type, int code, const std::string& name);

// [brands.b_NAME] with every parameter that has no standard.
std::string brandText(const Type& type, const std::string& name);

// Format, simulation, group "g" with all its series.
std::string headText(int days, bool traceSources);

// A model of one component, fed by as many sources as it asks for.
std::string singleModel(const Type& type, int code, bool traceSources);

// A network of all types that should pass the checks more often than not. As it is meant, water goes to inputs for
// water, a demand to inputs for demands, and each output to one input.
enum class Wiring { any, meant };
std::string randomModel(std::mt19937& random, int components, Wiring wiring = Wiring::any);

// Any wiring, without the types of `never`; a third of the components are of the types of `often`.
struct Mixture {
    std::vector<std::string> often, never;
};
std::string randomModel(std::mt19937& random, int components, const Mixture& mixture, Wiring wiring = Wiring::any);

// Writes the text to a file in a folder of this process's own and returns its path.
std::string writeModel(const std::string& text);

}  // namespace kesto::test
