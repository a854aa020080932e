// Parsing of the command line.
#pragma once

// Sets the action and its options from the words of "argv". Returns only for a valid command line;
// otherwise ends the run: -h with the usage text, -V with the version (kOk, or kWriteFailed when
// standard output is lost), and any violation with kInvalidArgument "Invalid or missing argument.
// Use \"-h\" to display help.". Nothing has been changed by then, and nothing is locked.
void GetArgs(int argc, char** argv);

// What -h prints, without its last line end.
extern const char* const usage_msg;
