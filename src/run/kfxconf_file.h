// kfx.conf as a file. It is written in place, since the console daemon knows it by its name; the
// lines are made elsewhere.
#pragma once

#include <string>

#include "base/outcome.h"
#include "base/output.h"
#include "model/inventory.h"

// Puts what belongs into kfx.conf. Fails as WriteKfxConf.
Outcome PutKfxConf(const Inventory& inventory, Output& out);

// Writes kfx.conf anew: two comment lines that warn against editing it, then the lines of every
// platform and console. "map" is the path of the map, which kfx.conf must not be under a second
// name. kCannotOpen "Cannot open \"%s\"."; kWriteFailed with the system's text when
// a new file cannot be given its group or mode, or "Write failed for \"%s\"." when its text cannot
// be written; kIncompleteMap from the lines, those before the incomplete element then stand in it.
Outcome CreateKfxConfFile(const Inventory& inventory, const std::string& map);
