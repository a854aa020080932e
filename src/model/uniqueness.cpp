#include "model/uniqueness.h"

#include "base/text.h"
#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

// Calls "visit" with each name that counts as used.
template <typename Visit>
static void VisitNames(const RVT_Node& map, Visit visit) {
    for (const RVT_Node& node : ElementsEvenDeleted(map, tag::Platform, tag::Console)) {
        const auto name = GetPropertyValue(node, Property::kName);
        if (!name) {
            continue;
        }
        visit(*name);
        if (!node.IsName(tag::Platform)) {
            continue;
        }
        for (const RVT_Node& console : ElementsEvenDeleted(node, tag::Console)) {
            if (const auto console_name = GetPropertyValue(console, Property::kName)) {
                visit(*console_name);
            }
        }
    }
}

int GetCountOfConsolesWithName(const RVT_Node& map, std::string_view name) {
    int count = 0;
    VisitNames(map, [&count, name](std::string_view used) {
        count += EqualsIgnoringCase(used, name) ? 1 : 0;
    });
    return count;
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

bool IsDuplicateAddress(const RVT_Node& map, const RVT_Node* node, std::string_view address) {
    for (const RVT_Node& other : ElementsEvenDeleted(map, tag::Platform, tag::Console)) {
        if (&other != node && GetPropertyValue(other, Property::kAddress) == address) {
            return true;
        }
    }
    return false;
}

static int CountConsolesWithPort(const RVT_Node& platform, std::string_view port) {
    int count = 0;
    for (const RVT_Node& console : ElementsEvenDeleted(platform, tag::Console)) {
        count += GetPropertyValue(console, Property::kPort) == port ? 1 : 0;
    }
    return count;
}

int GetCountOfConsolesWithAddress(const RVT_Node& map, std::string_view address,
                                  std::string_view port) {
    int count = 0;
    for (const RVT_Node& node : ElementsEvenDeleted(map, tag::Platform, tag::Console)) {
        if (GetPropertyValue(node, Property::kAddress) != address) {
            continue;
        }
        const auto own_port = GetPropertyValue(node, Property::kPort);
        if (own_port == port) {
            ++count;
        } else if (own_port && node.IsName(tag::Platform)) {
            count += CountConsolesWithPort(node, port);
        }
    }
    return count;
}
