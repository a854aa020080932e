#include "model/uniqueness.h"

#include "base/exit_code.h"
#include "base/text.h"
#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

static bool HasProperty(const RVT_Node& node, std::string_view property, std::string_view wanted) {
    std::string_view value;
    return GetPropertyValue(node, property, value) == ExitCode::kOk && value == wanted;
}

int GetCountOfConsolesWithName(std::string_view name) {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return Number(ExitCode::kIncompleteMap);
    }
    int count = 0;
    for (const RVT_Node& node : ElementsEvenDeleted(*map, Platform, Console)) {
        std::string_view node_name;
        if (GetPropertyValue(node, NameProp, node_name) != ExitCode::kOk) {
            continue;
        }
        count += EqualsIgnoringCase(node_name, name) ? 1 : 0;
        if (!node.IsName(Platform)) {
            continue;
        }
        for (const RVT_Node& console : ElementsEvenDeleted(node, Console)) {
            std::string_view console_name;
            if (GetPropertyValue(console, NameProp, console_name) == ExitCode::kOk &&
                EqualsIgnoringCase(console_name, name)) {
                ++count;
            }
        }
    }
    return count;
}

bool IsDuplicateName(std::string_view name) {
    return GetCountOfConsolesWithName(name) != 0;
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
        std::string_view own_port;
        if (!HasProperty(node, AddrProp, address) ||
            GetPropertyValue(node, PortProp, own_port) != ExitCode::kOk) {
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
