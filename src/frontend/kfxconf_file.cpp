#include "frontend/kfxconf_file.h"

#include <fcntl.h>
#include <unistd.h>

#include "base/calls.h"
#include "base/error.h"
#include "base/files.h"
#include "base/paths.h"
#include "base/process.h"
#include "daemonconf/kfxconf.h"
#include "frontend/options.h"

static constexpr const char* kfxconf_header =
    "# WARNING!!! This is a computer generated file. DO NOT EDIT.\n"
    "# Any manual changes will be lost when the file is regenerated.\n";

ExitCode CreateKfxConfFile() {
    OpenedFile file = OpenOrCreate(paths::kKfxConf, O_WRONLY | O_TRUNC, 0666);
    if (!file.fd.IsOpen()) {
        return Fail(ExitCode::kCannotOpen, "Cannot open \"%s\".", paths::kKfxConf);
    }
    if (file.created) {
        if (const ExitCode code = GiveToProductGroup(file.fd.get(), 0660); code != ExitCode::kOk) {
            return code;
        }
    }
    // The daemon may read the file meanwhile, so the text leaves in as few writes as it fits in.
    Output out(file.fd.get());
    out.Put(kfxconf_header);
    const ExitCode code = Report(WriteKfxConf(out, inventory, ""));
    const bool written = out.Flush() && file.fd.Close();
    if (code != ExitCode::kOk) {
        return code;
    }
    return written ? ExitCode::kOk : LostOutput(paths::kKfxConf);
}

ExitCode ViewKfxConfLines() {
    const TerminationAllowed while_waiting;
    Output out(STDOUT_FILENO);
    const ExitCode code = Report(WriteKfxConf(out, inventory, options.system_name));
    const bool written = out.Flush();
    if (code != ExitCode::kOk) {
        return code;
    }
    return written ? ExitCode::kOk : LostOutput(paths::kKfxConf);
}
