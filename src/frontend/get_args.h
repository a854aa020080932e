// The command line of this run.
#pragma once

// Sets the command from the words of "argv". Returns only for a valid command line; otherwise ends
// the run: -h with the usage text, -V with the version (kOk, or kWriteFailed when standard output
// is lost), and any violation with the outcome of ParseCommand. Nothing has been changed by then,
// and nothing is locked.
void GetArgs(int argc, char** argv);

// What -h prints, without its last line end.
extern const char* const usage_msg;
