#include "frontend/do_action.h"

#include "base/outcome.h"
#include "base/output.h"
#include "base/process.h"
#include "commands/actions.h"
#include "commands/security.h"
#include "frontend/config_file.h"
#include "frontend/kfxconf_file.h"
#include "frontend/notification.h"
#include "frontend/options.h"
#include "frontend/stdin_capture.h"
#include "model/conversion.h"
#include "run/rvt_exit.h"
#include "translog/rvt_trans_log.h"
#include "xml/rvt_xml_parser.h"
#include "xml/rvt_xml_writer.h"

// Captures the document, records it in the log and installs it. Its tree lives on in the map.
static ExitCode RunUpdateCache() {
    CapturedInput input;
    ExitCode code = ExitCode::kOk;
    if (!Passed(input.WriteStdInToTempFile(), code) || !Passed(LogStdIn(input.Text()), code)) {
        return code;
    }
    RVT_XML_Tree cache_document;
    {
        const TerminationAllowed while_reading;
        static_cast<void>(ParseXMLText(input.Text(), input.Name(), &cache_document));
    }
    return Report(Execute(command, inventory, cache_document));
}

static ExitCode RunConversion() {
    const Result<bool> converted = DoVersionConversion(inventory);
    if (!converted.ok()) {
        return Report(converted.outcome());
    }
    return *converted ? WriteXMLFile(xml_file, &inventory.Tree()) : ExitCode::kOk;
}

static ExitCode RunViewSecurity() {
    const Result<std::string_view> security = ViewSecurity(inventory);
    return security.ok() ? PrintLine(*security) : Report(security.outcome());
}

static ExitCode RunCommand() {
    switch (action) {
        case kUpdateCache:
            return RunUpdateCache();
        case kViewKfxConf:
            return ViewKfxConfLines();
        case kViewSecurity:
            return RunViewSecurity();
        case kConvertMap:
            return RunConversion();
        case kGetConfigValue:
            return ReadConfigFile();
        case kSetConfigValue:
            return WriteConfigFile();
        default:
            return Report(Execute(command, inventory));
    }
}

static void EndRunUnlessOk(ExitCode code) {
    if (code != ExitCode::kOk) {
        RVTExit(code);
    }
}

void DoAction() {
    const Follow& follow = RowOf(action).follow;
    EndRunUnlessOk(RunCommand());
    if (follow.map) {
        EndRunUnlessOk(WriteXMLFile(xml_file, &inventory.Tree()));
    }
    if (follow.kfxconf) {
        EndRunUnlessOk(CreateKfxConfFile());
    }
}

void NotifyOfAction() {
    const Follow& follow = RowOf(action).follow;
    NotifyComponents(follow.web, follow.daemon);
}
