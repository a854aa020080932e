// The transaction log: every run leaves one entry, and the log as a whole is a shell script that
// repeats the runs. An entry is made in memory and appended in one piece when the run's exit code
// is known, so entries never mix, and they stand in the order in which the runs took effect.
//
//     ##########################################################################
//     # Time: 11/16/2026 19:00:05
//     ##########################################################################
//
//     /usr/opt/tqs/bin/tqsmgr -remove platform -name "lab1"
//
//     echo "Recorded Exit Code = 1, This Exit Code = $?"
//
//     # EXIT CODE: 1
//     # ERROR MESSAGE:
//     #   Platform "lab1" not found.
//
// (the command ends with a blank; after exit code 0 an empty line takes the place of the error
// block). Captured standard input follows the command as a here-document, "... <<EOF". A failed web
// notification puts its error block before the echo line. A log of more than 1 MiB is moved to
// tqsmgr.log.old when a run begins.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "base/files.h"
#include "base/outcome.h"

// The entry of one run. While no log could be opened, all but the first do nothing.
class TransactionLog {
  public:
    // Opens the log, rotating or creating it where due, begins the entry with the time and "words",
    // the program's own first, and reserves room on the disk for the largest entry that the run can
    // make, so that a run that cannot be recorded changes nothing. kCannotOpen "Cannot open %s";
    // kWriteFailed with the system's text when a new log cannot be given its group or mode, or
    // "Write failed for %s" when there is no room.
    Outcome LogCommandLine(std::span<const char* const> words);

    // Adds "input", the standard input that the run has captured, to the command as a
    // here-document. kWriteFailed "Write failed for %s" when there is no room for it.
    Outcome LogStdIn(std::string_view input);

    // Adds an error block with "message" to the entry. If the entry stands in the log already, it
    // is put into it there.
    void PutMsg(std::string_view message);

    // Ends the entry with the run's code, and the message of a failure, and appends it to the log.
    // If it stands there already, its end is replaced. What cannot be written is lost; the log is
    // then as it was.
    void PutExitCode(const Outcome& outcome);

  private:
    Outcome OpenLog();
    Outcome RefuseUnlessRoom();
    [[nodiscard]] bool IsWithinLimit() const;
    void MakeEnding(const Outcome& outcome);
    void AppendEntry();
    void AmendEntry();

    OpenedFile file_;           // from the start of the run until the entry is appended
    bool is_begun_ = false;     // the log could be opened
    bool is_appended_ = false;  // the entry stands in it, or is lost
    // Both have the memory for their largest from the start, so that a run that has changed
    // something is recorded without needing more.
    std::string entry_;       // banner, command and here-document, then also what follows
    std::string ending_;      // notice and exit code
    std::string notice_;      // error block of a failed notification
    size_t ending_size_ = 0;  // of the ending that the entry has
};

// Fills "buffer" of "size" bytes with the local time as "11/16/2026 19:00:05" and returns the
// length written, 0 when it does not fit.
size_t GetTimeStamp(char* buffer, size_t size);
