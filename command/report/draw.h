// The network of a model as a picture: text for Graphviz, and Graphviz run on it.
#pragma once

#include <string>

#include "model.h"

namespace kesto {

// Networks of more components are drawn by group: nobody can read them, and laying them out takes minutes.
inline constexpr std::size_t kDrawable = 300;

// The network in Graphviz's language: a box with its ports for each component, groups as clusters, an arrow for each
// connection, dashed where it carries a demand.
std::string networkDot(const Model& model);

// The same by group: a box for each with its components by type, or for all that are alike, and an arrow for all
// connections from one to another. Of 40 boxes and 200 arrows at most.
std::string groupsDot(const Model& model);

// What Graphviz's `dot` makes of a graph, as "svg", "png", "pdf" or another of its formats. Throws when the program is
// missing or fails.
std::string renderGraph(const std::string& dot, const std::string& format);

}  // namespace kesto
