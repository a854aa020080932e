#include "commands/security.h"

#include "model/lookups.h"
#include "model/vocabulary.h"

static Result<RVT_Node*> FindSecurity(const Inventory& inventory) {
    const Result<RVT_Node*> map = inventory.NeedSystemMap(ExitCode::kIncompleteMap);
    if (!map.ok()) {
        return map.outcome();
    }
    return FindMapAttribute(**map, security_tag);
}

Outcome SetSecurity(const Command& command, Inventory& inventory) {
    const Result<RVT_Node*> security = FindSecurity(inventory);
    if (security.ok()) {
        (*security)->SetValue(command.security);
    }
    return security.outcome();
}

Result<std::string_view> ViewSecurity(const Inventory& inventory) {
    const Result<RVT_Node*> security = FindSecurity(inventory);
    if (!security.ok()) {
        return security.outcome();
    }
    return std::string_view((*security)->GetValue());
}
