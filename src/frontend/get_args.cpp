#include "frontend/get_args.h"

#include <span>

#include "base/output.h"
#include "base/paths.h"
#include "frontend/options.h"
#include "frontend/parse_command.h"
#include "run/rvt_exit.h"

Command command;
Inventory inventory;
Action action = kNoAction;
const char* xml_file = paths::kSystemMap;
bool notify_web = true;
bool notify_kfxd = true;
bool notify_lrp = true;
Options options;

void GetArgs(int argc, char** argv) {
    const std::span<char*> words(argv, static_cast<size_t>(argc));
    Result<Command> parsed = ParseCommand(words.subspan(words.empty() ? 0 : 1));
    if (!parsed.ok()) {
        RVTExit(Report(parsed.outcome()));
    }
    command = *parsed;
    if (command.action == kShowHelp) {
        RVTExit(PrintLine(usage_msg));
    }
    if (command.action == kShowVersion) {
        RVTExit(PrintLine("TQS version " TQS_VERSION " build date " TQS_BUILD_DATE));
    }
    action = command.action;
    xml_file = command.map.c_str();
    notify_web = command.notify_web;
    notify_kfxd = command.notify_kfxd;
    options = {command.name, command.config_file, command.config_argument, command.config_argument};
}
