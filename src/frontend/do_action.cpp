#include "frontend/do_action.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <string>

#include "base/exit_code.h"
#include "base/files.h"
#include "base/output.h"
#include "base/paths.h"
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
#include "run/map_lock.h"
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
    static_cast<void>(ParseXMLText(input.Text(), input.Name(), &cache_document));
    return UpdateCache(options.platform_name, &cache_document);
}

static ExitCode RunConversion() {
    DoVersionConversion(xml_file);
    return ExitCode::kOk;
}

namespace {

// What follows a command that succeeded.
enum Follow : unsigned {
    kMap = 1,      // the map is written back
    kKfxConf = 2,  // kfx.conf is regenerated
    kWeb = 4,      // the web front end is notified
    kDaemon = 8,   // the console daemon and the third component are notified
};

// An action changes the map, or makes a text to print; an action without either only leads to what
// follows it.
struct ActionRow {
    Action action = kNoAction;
    ExitCode (*change)() = nullptr;
    ExitCode (*text)(std::string& text) = nullptr;
    const char* lost = nullptr;  // what a message calls a text that could not be printed
    unsigned follow = 0;
};

constexpr unsigned kInventory = kMap | kKfxConf | kWeb | kDaemon;
constexpr const char* kStdOut = "standard output";

ExitCode RunUpdatePlatform() {
    return UpdatePlatform(options.platform_name, options.name_val_list);
}
ExitCode RunUpdateConsole() {
    return UpdateConsole(options.system_name, options.name_val_list);
}

const std::array<ActionRow, 15> kActions = {{
    {.action = kAddPlatform, .change = RunAddPlatform, .follow = kInventory},
    {.action = kUpdatePlatform, .change = RunUpdatePlatform, .follow = kInventory},
    {.action = kRemovePlatform,
     .change = [] { return RemovePlatform(options.platform_name); },
     .follow = kInventory},
    {.action = kAddSystem, .change = RunAddConsole, .follow = kInventory},
    {.action = kUpdateSystem, .change = RunUpdateConsole, .follow = kInventory},
    {.action = kRemoveSystem,
     .change = [] { return RemoveConsole(options.system_name); },
     .follow = kInventory},
    {.action = kUpdateCache, .change = RunUpdateCache, .follow = kMap | kWeb},
    {.action = kRemoveCache,
     .change = [] { return RemoveCache(options.platform_name); },
     .follow = kMap | kWeb},
    {.action = kWriteKfxConf, .follow = kKfxConf},
    {.action = kViewKfxConf, .text = ViewKfxConfLines, .lost = paths::kKfxConf},
    {.action = kSetSecurity,
     .change = [] { return SetSecurity(options.security); },
     .follow = kMap},
    {.action = kViewSecurity, .text = ViewSecurity, .lost = kStdOut},
    {.action = kConvertMap, .change = RunConversion, .follow = kKfxConf},
    {.action = kGetConfigValue, .text = ReadConfigFile, .lost = kStdOut},
    {.action = kSetConfigValue, .change = WriteConfigFile, .follow = kDaemon},
}};

// An action without a row does nothing.
const ActionRow& RowOfAction() {
    static const ActionRow kNothing;
    const auto* const row = std::find_if(kActions.begin(), kActions.end(),
                                         [](const ActionRow& r) { return r.action == action; });
    return row == kActions.end() ? kNothing : *row;
}

void EndRunUnlessOk(ExitCode code) {
    if (code != ExitCode::kOk) {
        RVTExit(code);
    }
}

// Prints the text of an action that ended with "code". The lock is released first, so that whoever
// reads the text, or does not, holds up no other run.
ExitCode PrintText(const std::string& text, const char* lost, ExitCode code) {
    if (text.empty()) {
        return code;
    }
    if (const ExitCode released = Unlock(); released != ExitCode::kOk) {
        return released;
    }
    const bool printed = WriteAll(STDOUT_FILENO, text);
    return printed || code != ExitCode::kOk ? code : LostOutput(lost);
}

ExitCode RunCommand(const ActionRow& row) {
    if (row.text == nullptr) {
        return row.change == nullptr ? ExitCode::kOk : row.change();
    }
    std::string text;
    const ExitCode code = row.text(text);
    return PrintText(text, row.lost, code);
}

}  // namespace

void DoAction() {
    const ActionRow& row = RowOfAction();
    EndRunUnlessOk(RunCommand(row));
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
