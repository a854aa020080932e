#include "frontend/kfxconf_file.h"

#include <fcntl.h>

#include "base/error.h"
#include "base/files.h"
#include "base/paths.h"
#include "daemonconf/kfxconf.h"
#include "frontend/options.h"
#include "run/map_lock.h"

static constexpr const char* kfxconf_header =
    "# WARNING!!! This is a computer generated file. DO NOT EDIT.\n"
    "# Any manual changes will be lost when the file is regenerated.\n";

ExitCode CreateKfxConfFile() {
    if (const ExitCode code = BeginChange(); code != ExitCode::kOk) {
        return code;
    }
    OpenedFile file = OpenOrCreate(paths::kKfxConf, O_WRONLY | O_TRUNC, 0660);
    if (!file.fd.IsOpen()) {
        return Fail(ExitCode::kCannotOpen, "Cannot open \"%s\".", paths::kKfxConf);
    }
    if (file.given != ExitCode::kOk) {
        return file.given;
    }
    // The daemon may read the file meanwhile, so the text leaves in as few writes as it fits in.
    Output out(file.fd.get());
    out.Put(kfxconf_header);
    const ExitCode code = WriteKfxConf(out, "");
    const bool written = out.Flush() && file.fd.Close();
    if (code != ExitCode::kOk) {
        return code;
    }
    return written ? ExitCode::kOk : LostOutput(paths::kKfxConf);
}

ExitCode ViewKfxConfLines(std::string& lines) {
    Output out(lines);
    const ExitCode code = WriteKfxConf(out, options.system_name);
    static_cast<void>(out.Flush());
    return code;
}
