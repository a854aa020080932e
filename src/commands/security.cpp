#include "commands/security.h"

#include "model/lookups.h"
#include "model/vocabulary.h"

static Result<RVT_Node*> FindSecurity() {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return SystemMapMissing(ExitCode::kIncompleteMap);
    }
    RVT_Node* security = FindAttribute(*map, security_tag);
    if (security == nullptr) {
        return Outcome(ExitCode::kIncompleteMap,
                       "Cannot find the \"security\" attribute for SystemMap.");
    }
    return security;
}

Outcome SetSecurity(std::string_view value) {
    const Result<RVT_Node*> security = FindSecurity();
    if (security.ok()) {
        (*security)->SetValue(value);
    }
    return security.outcome();
}

Result<std::string_view> ViewSecurity() {
    const Result<RVT_Node*> security = FindSecurity();
    if (!security.ok()) {
        return security.outcome();
    }
    return std::string_view((*security)->GetValue());
}
