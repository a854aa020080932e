// What the commands of tqs do, from a map that is named to the exit status.
#pragma once

#include <string>

#include "base/outcome.h"
#include "base/output.h"
#include "report/list.h"

// How the output came to its reader, kWriteFailed where it did not: without a message when the
// reader has gone, who does not want to be told.
Outcome Delivered(Output& out);

// Each reads the map "map", a file or "-" for standard input, and prints what was asked for on
// standard output. Returns the exit status; fails with kNotWellFormed for a map that cannot be
// read, kIncompleteMap for a document without a root, kWriteFailed for output that is lost, without
// a message when its reader has gone.

// 1 when a name was not found; each is named on standard error.
Result<int> ListItems(const std::string& map, Listing listing);

// A line for each finding and one that counts them. 1 when there are errors.
Result<int> CheckMap(const std::string& map);

enum class DiffForm { kText, kJson, kCommands };

// What differs between the maps "before" and "now", of which one may be standard input. 0 when they
// are equal, else 1. kIncompleteMap without a message when no commands lead from one to the other;
// standard error then says why.
Result<int> DiffMaps(const std::string& before, const std::string& now, DiffForm form);

// The commands that make the map's inventory of an empty one. Fails as DiffMaps.
Result<int> ExportMap(const std::string& map);
