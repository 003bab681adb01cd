#include "draw.h"

#include <fmt/format.h>

#include <map>

#include "carriers.h"
#include "catalogue_tables.h"
#include "markup.h"

namespace kesto {

namespace {

struct Field {
    std::string_view name, colour;
    std::vector<std::vector<Type> (*)()> types;
};

// Six digits: Graphviz takes a short "#eee" for black.
const std::vector<Field>& fields() {
    static const std::vector<Field> all{
        {"users and surfaces", "#d9ead3", {tables::users, tables::surfaces}},
        {"stores", "#cfe2f3", {tables::stores}},
        {"treatment, supply and links", "#fff2cc", {tables::treatment, tables::supply, tables::links}},
        {"routing and quality", "#eeeeee", {tables::routing, tables::qualityUnits}},
        {"energy", "#f9d5c9", {tables::energyUnits}},
    };
    return all;
}

const Field& fieldOf(const Type& type) {
    static const auto byType = [] {
        std::map<std::string_view, const Field*> result;
        for (const Field& field : fields()) {
            for (const auto types : field.types) {
                for (const Type& one : types()) {
                    result[one.name] = &field;
                }
            }
        }
        return result;
    }();
    return *byType.at(type.name);
}

std::string portCells(const std::vector<Port>& ports, char side) {
    std::string cells;
    for (std::size_t i = 0; i < ports.size(); ++i) {
        cells += fmt::format("<tr><td port=\"{}{}\" align=\"{}\"><font point-size=\"9\">{}</font></td></tr>", side,
                             i + 1, side == 'i' ? "left" : "right", escapeMarkup(ports[i].name));
    }
    if (cells.empty()) return "";
    return fmt::format("<td><table border=\"0\" cellborder=\"0\" cellspacing=\"0\" cellpadding=\"1\">{}</table></td>",
                       cells);
}

std::string node(std::size_t index, const Component& component) {
    const Type& type = *component.type;
    return fmt::format(
        "c{} [id=\"n{}\", label=<<table border=\"1\" cellborder=\"0\" cellspacing=\"0\" cellpadding=\"3\" "
        "color=\"#666666\" "
        "bgcolor=\"{}\" style=\"rounded\"><tr>{}<td><b>{}</b><br/><font point-size=\"9\" "
        "color=\"#555555\">{}</font></td>{}</tr></table>>, tooltip=\"{}\"];\n",
        index, index, fieldOf(type).colour, portCells(type.in, 'i'), escapeMarkup(component.name),
        escapeMarkup(type.name), portCells(type.out, 'o'), escapeMarkup(component.name));
}

std::string arrows(const Model& model) {
    const Carriers carriers(model, Network(model));
    std::string text;
    for (std::size_t i = 0; i < model.connections.size(); ++i) {
        const Connection& connection = model.connections[i];
        const auto end = [&](int component, const std::vector<Port>& ports, char side, int port) {
            const bool named = port >= 1 && static_cast<std::size_t>(port) <= ports.size();
            return named ? fmt::format("c{}:{}{}:{}", component, side, port, side == 'i' ? 'w' : 'e')
                         : fmt::format("c{}", component);
        };
        const Type& from = *model.components[static_cast<std::size_t>(connection.from)].type;
        const Type& to = *model.components[static_cast<std::size_t>(connection.to)].type;
        text += fmt::format("{} -> {} [id=\"e{}\"{}];\n", end(connection.from, from.out, 'o', connection.fromPort),
                            end(connection.to, to.in, 'i', connection.toPort), i,
                            carriers.ofOutput(connection.from, connection.fromPort) == Carries::demand
                                ? ", style=dashed, color=\"#b45f06\""
                                : "");
    }
    return text;
}

// One box that explains colours and lines, with the fields that occur.
std::string legend(const Model& model) {
    std::string cells;
    for (const Field& field : fields()) {
        bool occurs = false;
        for (const Component& component : model.components) {
            occurs = occurs || &fieldOf(*component.type) == &field;
        }
        if (occurs) cells += fmt::format("<td bgcolor=\"{}\">{}</td>", field.colour, field.name);
    }
    return fmt::format(
        "label=<<table border=\"0\" cellborder=\"0\" cellspacing=\"6\" cellpadding=\"4\"><tr>{}"
        "<td><font color=\"#3d85c6\">\u2014\u2014</font> water</td><td><font color=\"#b45f06\">- - -</font> demand</td>"
        "</tr></table>>;\nlabelloc=b;\n",
        cells);
}

}  // namespace

std::string networkDot(const Model& model) {
    std::string text =
        "digraph network {\n"
        "rankdir=LR; bgcolor=\"#ffffff\"; ranksep=0.9; nodesep=0.2; fontname=\"DejaVu Sans\"; fontsize=10;\n"
        "node [shape=plain, fontname=\"DejaVu Sans\", fontsize=11];\n"
        "edge [color=\"#3d85c6\", penwidth=1.4, arrowsize=0.7];\n";
    text += legend(model);
    std::vector<std::string> clusters(model.groups.size());
    for (std::size_t i = 0; i < model.components.size(); ++i) {
        const Component& component = model.components[i];
        (component.group >= 0 ? clusters[static_cast<std::size_t>(component.group)] : text) += node(i, component);
    }
    for (std::size_t i = 0; i < clusters.size(); ++i) {
        if (clusters[i].empty()) continue;
        text += fmt::format(
            "subgraph cluster_{} {{\nid=\"g{}\"; label=<{}>; labelloc=t; labeljust=l; fontcolor=\"#777777\"; "
            "color=\"#bbbbbb\"; "
            "style=\"rounded\";\n{}}}\n",
            i, i, escapeMarkup(model.groups[i].name), clusters[i]);
    }
    return text + arrows(model) + "}\n";
}

}  // namespace kesto
