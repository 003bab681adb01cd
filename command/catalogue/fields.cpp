#include "fields.h"

#include <array>
#include <map>

#include "catalogue_tables.h"

namespace kesto {

namespace {

struct Part {
    std::string_view name;
    std::vector<Type> (*types)();
};

// In the order of the fields.
constexpr std::array<Part, kFields> kParts{{{"users", tables::users},
                                            {"surfaces", tables::surfaces},
                                            {"stores", tables::stores},
                                            {"treatment", tables::treatment},
                                            {"supply", tables::supply},
                                            {"links", tables::links},
                                            {"routing", tables::routing},
                                            {"quality", tables::qualityUnits},
                                            {"energy", tables::energyUnits}}};

std::map<std::string_view, Field> fieldsByType() {
    std::map<std::string_view, Field> fields;
    for (std::size_t i = 0; i < kParts.size(); ++i) {
        for (const Type& type : kParts[i].types()) {
            fields[type.name] = static_cast<Field>(i);
        }
    }
    return fields;
}

}  // namespace

std::string_view toText(Field field) {
    return kParts[static_cast<std::size_t>(field)].name;
}

Field fieldOf(const Type& type) {
    static const std::map<std::string_view, Field> fields = fieldsByType();
    return fields.at(type.name);
}

}  // namespace kesto
