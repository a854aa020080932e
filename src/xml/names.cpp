#include "xml/names.h"

#include <unordered_map>
#include <vector>

#include "base/arena.h"

namespace {

// The standard hash under another name: under its own, the library compares a name with all others,
// one by one, as long as they are few.
struct NameHash : std::hash<std::string_view> {};

struct Names {
    // In the order of the ids that the header gives.
    std::vector<std::string_view> texts = {"",         "xmlns",    "name", "value",
                                           "Property", "readonly", "type", "ID"};
    std::unordered_map<std::string_view, NameId, NameHash> ids = {{"", 0},
                                                                  {"xmlns", kXmlnsId},
                                                                  {"name", kNameId},
                                                                  {"value", kValueId},
                                                                  {"Property", kPropertyId},
                                                                  {"readonly", kReadonlyId},
                                                                  {"type", kTypeId},
                                                                  {"ID", kIDId}};
};

Names names;

}  // namespace

NameId InternName(std::string_view name) {
    const auto known = names.ids.find(name);
    if (known != names.ids.end()) {
        return known->second;
    }
    const auto id = static_cast<NameId>(names.texts.size());
    names.texts.emplace_back(arena::Copy(name), name.size());
    names.ids.emplace(names.texts.back(), id);
    return id;
}

std::string_view NameText(NameId id) {
    return names.texts[id];
}
