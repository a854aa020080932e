#include "model/uniqueness.h"

#include "base/exit_code.h"
#include "base/text.h"
#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

static bool HasProperty(const RVT_Node& node, std::string_view property, std::string_view wanted) {
    return GetPropertyValue(node, property) == wanted;
}

// Calls "visit" with each name that counts as used.
template <typename Visit>
static void VisitNames(const RVT_Node& map, Visit visit) {
    for (const RVT_Node& node : ElementsEvenDeleted(map, Platform, Console)) {
        const auto name = GetPropertyValue(node, NameProp);
        if (!name) {
            continue;
        }
        visit(*name);
        if (!node.IsName(Platform)) {
            continue;
        }
        for (const RVT_Node& console : ElementsEvenDeleted(node, Console)) {
            if (const auto console_name = GetPropertyValue(console, NameProp)) {
                visit(*console_name);
            }
        }
    }
}

int GetCountOfConsolesWithName(std::string_view name) {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return Number(ExitCode::kIncompleteMap);
    }
    int count = 0;
    VisitNames(*map, [&count, name](std::string_view used) {
        count += EqualsIgnoringCase(used, name) ? 1 : 0;
    });
    return count;
}

bool IsDuplicateName(std::string_view name) {
    return GetCountOfConsolesWithName(name) != 0;
}

NameIndex::NameIndex(const RVT_Node& map) {
    VisitNames(map, [this](std::string_view used) { ++counts_[ToLower(used)]; });
}

int NameIndex::Count(std::string_view name) const {
    const auto found = counts_.find(ToLower(name));
    return found == counts_.end() ? 0 : found->second;
}

void NameIndex::Rename(std::string_view from, std::string_view to) {
    --counts_[ToLower(from)];
    ++counts_[ToLower(to)];
}

bool IsDuplicateAddress(const RVT_Node* node, std::string_view address) {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return false;
    }
    for (const RVT_Node& other : ElementsEvenDeleted(*map, Platform, Console)) {
        if (&other != node && HasProperty(other, AddrProp, address)) {
            return true;
        }
    }
    return false;
}

int GetCountOfConsolesWithAddress(std::string_view address, std::string_view port) {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return 0;
    }
    int count = 0;
    for (const RVT_Node& node : ElementsEvenDeleted(*map, Platform, Console)) {
        const auto own_port =
            HasProperty(node, AddrProp, address) ? GetPropertyValue(node, PortProp) : std::nullopt;
        if (!own_port) {
            continue;
        }
        if (own_port == port) {
            ++count;
        } else if (node.IsName(Platform)) {
            for (const RVT_Node& console : ElementsEvenDeleted(node, Console)) {
                count += HasProperty(console, PortProp, port) ? 1 : 0;
            }
        }
    }
    return count;
}

bool IsDuplicatePortWithinAddress(std::string_view address, std::string_view port) {
    return GetCountOfConsolesWithAddress(address, port) != 0;
}
