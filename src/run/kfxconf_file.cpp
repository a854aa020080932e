#include "run/kfxconf_file.h"

#include <fcntl.h>

#include "base/calls.h"
#include "base/files.h"
#include "base/paths.h"
#include "daemonconf/kfxconf.h"

static constexpr std::string_view kfxconf_header =
    "# WARNING!!! This is a computer generated file. DO NOT EDIT.\n"
    "# Any manual changes will be lost when the file is regenerated.\n";

Outcome PutKfxConf(const Inventory& inventory, Output& out) {
    out.Put(kfxconf_header);
    return WriteKfxConf(out, inventory, "");
}

Outcome CreateKfxConfFile(const Inventory& inventory, const std::string& map) {
    OpenedFile file = OpenOrCreate(paths::kKfxConf, O_WRONLY, 0660, map);
    // It is emptied only once it is known to be no other file.
    if (!file.fd.IsOpen() || calls::Ftruncate(file.fd.get(), 0) != 0) {
        return Failure(ExitCode::kCannotOpen, "Cannot open \"%s\".", paths::kKfxConf);
    }
    if (!file.given.ok()) {
        return file.given;
    }
    // The daemon may read the file meanwhile, so the text leaves in as few writes as it fits in.
    Output out(file.fd.get());
    Outcome outcome = PutKfxConf(inventory, out);
    const bool is_written = out.Flush() && file.fd.Close();
    return outcome.ok() && !is_written ? LostOutput(paths::kKfxConf) : outcome;
}
