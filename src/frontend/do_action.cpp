#include "frontend/do_action.h"

#include <algorithm>
#include <array>

#include "base/outcome.h"
#include "base/output.h"
#include "base/process.h"
#include "commands/cache.h"
#include "commands/console.h"
#include "commands/platform.h"
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

static ExitCode RunAddPlatform() {
    const Options& o = options;
    return AddPlatform(o.platform_name, o.model, o.address, o.port, o.logging, o.events, o.enable,
                       o.comment, o.template_name, o.event_file, o.mapped_port, o.auth,
                       o.first_ts_port, o.last_ts_port);
}

static ExitCode RunAddConsole() {
    const Options& o = options;
    return AddConsole(o.system_name, o.platform_name, o.address, o.port, o.type, o.logging,
                      o.events, o.enable, o.comment, o.event_file, o.mapped_port, o.auth);
}

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
    return Report(UpdateCache(options.platform_name, cache_document));
}

static ExitCode RunConversion() {
    const Result<bool> converted = DoVersionConversion();
    if (!converted.ok()) {
        return Report(converted.outcome());
    }
    return *converted ? WriteXMLFile(xml_file, &rvt_xml_tree) : ExitCode::kOk;
}

static ExitCode RunViewSecurity() {
    const Result<std::string_view> security = ViewSecurity();
    return security.ok() ? PrintLine(*security) : Report(security.outcome());
}

namespace {

// What follows a command that succeeded.
enum Follow : unsigned {
    kMap = 1,      // the map is written back
    kKfxConf = 2,  // kfx.conf is regenerated
    kWeb = 4,      // the web front end is notified
    kDaemon = 8,   // the console daemon and the third component are notified
};

struct ActionRow {
    Action action;
    ExitCode (*command)();
    unsigned follow;
};

constexpr unsigned kInventory = kMap | kKfxConf | kWeb | kDaemon;

constexpr std::array<ActionRow, 15> kActions = {{
    {kAddPlatform, RunAddPlatform, kInventory},
    {kUpdatePlatform, [] { return UpdatePlatform(options.platform_name, options.name_val_list); },
     kInventory},
    {kRemovePlatform, [] { return RemovePlatform(options.platform_name); }, kInventory},
    {kAddSystem, RunAddConsole, kInventory},
    {kUpdateSystem, [] { return UpdateConsole(options.system_name, options.name_val_list); },
     kInventory},
    {kRemoveSystem, [] { return RemoveConsole(options.system_name); }, kInventory},
    {kUpdateCache, RunUpdateCache, kMap | kWeb},
    {kRemoveCache, [] { return Report(RemoveCache(options.platform_name)); }, kMap | kWeb},
    {kWriteKfxConf, [] { return ExitCode::kOk; }, kKfxConf},
    {kViewKfxConf, ViewKfxConfLines, 0},
    {kSetSecurity, [] { return Report(SetSecurity(options.security)); }, kMap},
    {kViewSecurity, RunViewSecurity, 0},
    {kConvertMap, RunConversion, kKfxConf},
    {kGetConfigValue, ReadConfigFile, 0},
    {kSetConfigValue, WriteConfigFile, kDaemon},
}};

const ActionRow& RowOfAction() {
    return *std::find_if(kActions.begin(), kActions.end(),
                         [](const ActionRow& row) { return row.action == action; });
}

void EndRunUnlessOk(ExitCode code) {
    if (code != ExitCode::kOk) {
        RVTExit(code);
    }
}

}  // namespace

void DoAction() {
    const ActionRow& row = RowOfAction();
    EndRunUnlessOk(row.command());
    if ((row.follow & kMap) != 0) {
        EndRunUnlessOk(WriteXMLFile(xml_file, &rvt_xml_tree));
    }
    if ((row.follow & kKfxConf) != 0) {
        EndRunUnlessOk(CreateKfxConfFile());
    }
}

void NotifyOfAction() {
    const unsigned follow = RowOfAction().follow;
    NotifyComponents((follow & kWeb) != 0, (follow & kDaemon) != 0);
}
