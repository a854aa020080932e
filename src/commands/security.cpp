#include "commands/security.h"

#include "model/lookups.h"
#include "model/vocabulary.h"

static Result<RVT_Node*> FindSecurity(const Inventory& inventory) {
    const Result<RVT_Node*> map = inventory.NeedSystemMap(ExitCode::kIncompleteMap);
    if (!map.ok()) {
        return map.outcome();
    }
    RVT_Node* security = FindAttribute(**map, security_tag);
    if (security == nullptr) {
        return Outcome(ExitCode::kIncompleteMap,
                       "Cannot find the \"security\" attribute for SystemMap.");
    }
    return security;
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
