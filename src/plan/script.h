// Change scripts: commands that make of one inventory another.
//
//     const Script script = ScriptFromTo(before, now);
//     if (script.obstacles.empty()) {
//         PrintScript(script, out);
//     }
#pragma once

#include <string>
#include <vector>

#include "base/output.h"
#include "commands/parse_command.h"
#include "model/inventory.h"
#include "plan/difference.h"
#include "plan/work.h"

struct Script {
    // Run in their order on the one inventory they give it the content of the other; none when it
    // has that already.
    std::vector<Step> steps;
    // If there are any, there are no steps.
    std::vector<Obstacle> obstacles;
};

// The script has been run on a copy of "before", each command as if it were alone on what writing
// and reading made of the map, and the result compared with "now". Values that are given to an
// element must stand in the reference files.
Script ScriptFromTo(const Inventory& before, const Outline& now);

// The same for who runs the script at once, and compares the result: nothing has been run yet, so a
// step may be refused.
Script UntriedScript(const Comparison& comparison);

// A line of tqsmgr for each step, in the shell's quoting, and a cache as a here-document behind it:
//     tqsmgr -update system -name "db1" -port "2005"
// Does not flush "out".
void PrintScript(const Script& script, Output& out);

// The same as if read, with the index of each step for its line. The script must outlive them.
std::vector<ParsedCommand> CommandsOf(const Script& script);
