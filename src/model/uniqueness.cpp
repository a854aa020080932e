#include "model/uniqueness.h"

#include <utility>

#include "base/exit_code.h"
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

namespace {

// A name in lower case: how many prefixes it has, and what stands behind them.
struct PrefixedName {
    size_t prefixes = 0;
    std::string rest;
};

PrefixedName TakeApart(std::string_view name) {
    const std::string lower = ToLower(name);
    size_t rest = 0;
    while (lower.compare(rest, 2, "p-") == 0) {
        rest += 2;
    }
    return {rest / 2, lower.substr(rest)};
}

}  // namespace

NameIndex::NameIndex(const RVT_Node& map) {
    VisitNames(map, [this](std::string_view used) {
        const auto [prefixes, rest] = TakeApart(used);
        ++families_[rest].uses[prefixes];
    });
}

int NameIndex::Count(std::string_view name) const {
    const auto [prefixes, rest] = TakeApart(name);
    const auto family = families_.find(rest);
    if (family == families_.end()) {
        return 0;
    }
    const auto uses = family->second.uses.find(prefixes);
    return uses == family->second.uses.end() ? 0 : uses->second;
}

// What was passed over once is passed over at once from then on: a name in use stays in use.
size_t NameIndex::FirstFree(Family& family, size_t from) {
    size_t free = from;
    while (family.uses.count(free) != 0) {
        free = family.next.try_emplace(free, free + 1).first->second;
    }
    while (from != free) {
        from = std::exchange(family.next[from], free);
    }
    return free;
}

std::string NameIndex::Rename(std::string_view name) {
    const auto [prefixes, rest] = TakeApart(name);
    Family& family = families_[rest];
    const size_t free = FirstFree(family, prefixes + 1);
    --family.uses[prefixes];
    ++family.uses[free];
    std::string renamed;
    for (size_t i = prefixes; i < free; ++i) {
        renamed += "P-";
    }
    return renamed += name;
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
