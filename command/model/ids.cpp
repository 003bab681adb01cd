#include "ids.h"

#include <fmt/format.h>

#include <map>
#include <set>

namespace kesto {

namespace {

// Ids in file order, around those that the model fixes.
void numberComponents(Model& model, Diagnostics& diagnostics) {
    std::map<int, const Component*> taken;
    for (const Component& component : model.components) {
        if (!component.idIsFixed) continue;
        const auto [other, isNew] = taken.emplace(component.id, &component);
        if (!isNew) {
            diagnostics.error("repeated", component.place,
                              fmt::format("component \"{}\": id {} is that of \"{}\" too", component.name, component.id,
                                          other->second->name));
        }
    }
    int next = kFirstComponentId;
    for (Component& component : model.components) {
        if (component.idIsFixed) continue;
        while (taken.contains(next))
            ++next;
        component.id = next++;
    }
    if (next > kLastId) {
        diagnostics.error("too-large", {std::make_shared<const std::string>(model.path), 0, 0},
                          "too many components: ids must stay below 16777216");
    }
}

// Groups count from 1, or downwards from -1 where no potentials are wanted: the engine books nothing below 1.
void numberGroups(Model& model, Diagnostics& diagnostics) {
    std::set<int> taken;
    for (const Component& component : model.components) {
        taken.insert(component.id);
    }
    for (const Group& group : model.groups) {
        if (group.id == 0) continue;
        if (!group.potentials) {
            diagnostics.error("wrong-value", group.place,
                              fmt::format("group \"{}\": either an id or potentials = false; without "
                                          "potentials its id is below 1",
                                          group.name));
        }
        if (taken.insert(group.id).second) continue;
        diagnostics.error("repeated", group.place, fmt::format("group \"{}\": id {} is taken", group.name, group.id));
    }
    int next = 1;
    int nextWithout = -1;
    for (Group& group : model.groups) {
        if (group.id != 0) continue;
        if (!group.potentials) {
            group.id = nextWithout--;
            continue;
        }
        while (taken.contains(next))
            ++next;
        group.id = next++;
    }
}

}  // namespace

void numberModel(Model& model, Diagnostics& diagnostics) {
    numberComponents(model, diagnostics);
    numberGroups(model, diagnostics);
}

}  // namespace kesto
