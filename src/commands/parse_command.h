// Parsing of the command line.
#pragma once

#include <span>
#include <vector>

#include "base/outcome.h"
#include "commands/command.h"
#include "translog/change_script.h"

// The command that "words", those behind the program's name, ask for. Nothing is looked at but the
// words. kInvalidArgument "Invalid or missing argument. Use \"-h\" to display help." for anything
// but one action, with what may stand before it and what belongs to it.
Result<Command> ParseCommand(std::span<const char* const> words);

// A command of a script, and what its words ask for.
struct ParsedCommand : ScriptCommand {
    Result<Command> command;
};

std::vector<ParsedCommand> ParseCommands(std::span<const ScriptCommand> commands);
