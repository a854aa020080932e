#include "commands/security.h"

#include "base/error.h"
#include "model/lookups.h"
#include "model/vocabulary.h"

static ExitCode FindSecurity(RVT_Node*& security) {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return ExitCode::kIncompleteMap;
    }
    security = FindAttribute(*map, security_tag);
    return security != nullptr ? ExitCode::kOk
                               : Fail(ExitCode::kIncompleteMap,
                                      "Cannot find the \"security\" attribute for SystemMap.");
}

ExitCode SetSecurity(const std::string& value) {
    RVT_Node* security = nullptr;
    const ExitCode code = FindSecurity(security);
    if (code == ExitCode::kOk) {
        security->SetValue(value);
    }
    return code;
}

ExitCode ViewSecurity(std::string& line) {
    RVT_Node* security = nullptr;
    const ExitCode code = FindSecurity(security);
    if (code == ExitCode::kOk) {
        line = std::string(security->GetValue()) + '\n';
    }
    return code;
}
