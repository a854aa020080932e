#include "commands/security.h"

#include <unistd.h>

#include "base/error.h"
#include "base/output.h"
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

ExitCode ViewSecurity() {
    RVT_Node* security = nullptr;
    const ExitCode code = FindSecurity(security);
    return code == ExitCode::kOk ? PrintLine(security->GetValue()) : code;
}
