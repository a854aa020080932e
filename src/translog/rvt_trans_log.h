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
//
// A run of many commands leaves an entry for each, as if each had been a run, in one piece; one
// that is refused leaves an entry of comment lines.
#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/files.h"
#include "base/outcome.h"

// What one run adds to the log. While none could be opened, all but Open do nothing.
class TransactionLog {
  public:
    // Where an entry ends in what the run adds: its notice and exit code.
    struct Ending {
        size_t at = 0;
        size_t size = 0;
    };

    // Sets the longest wait for the lock of the log, which a run of its own would hold for a moment
    // only: "limit", but ten seconds at most, and one second at least. The log is then written
    // without it, so that nobody who holds it holds up the run.
    void WaitAtMost(std::chrono::seconds limit);

    // Opens the log, rotating or creating it where due. kCannotOpen "Cannot open %s"; kWriteFailed
    // with the system's text when a new log cannot be given its group or mode.
    Outcome Open();

    // Reserves room on the disk for what is to be added and its largest ending, so that a run that
    // cannot be recorded changes nothing. kWriteFailed "Write failed for %s" when there is none.
    Outcome Reserve();

    // Opens the log, begins an entry with the time and "words", the program's own first, and
    // reserves room for it. Fails as Open and Reserve.
    Outcome LogCommandLine(std::span<const char* const> words);

    // Adds "input", the standard input that the run has captured, to the command as a
    // here-document. kWriteFailed "Write failed for %s" when there is no room for it.
    Outcome LogStdIn(std::string_view input);

    // Adds the whole entry of a command that has ended so, with the "input" that it has read.
    Ending LogRun(std::span<const char* const> words, std::optional<std::string_view> input,
                  const Outcome& outcome);

    // Adds one entry in place of all: comment "lines", each with its line end, code and message.
    void LogRefusal(std::string_view lines, const Outcome& outcome);

    // Chooses the entry that the functions below speak of; without it, it is the last.
    void Select(const Ending& ending) { place_ = ending; }

    // Adds an error block with "message" to the entry of a command that was accepted. If the entry
    // stands in the log already, it is put into it there.
    void PutMsg(std::string_view message);

    // Ends the entry with a code, and the message of a failure, and appends what is to be added to
    // the log. If it stands there already, the entry's end is replaced. What cannot be written, or
    // would have to be put into a log of more than kLargestInMemory, is lost; the log is then as it
    // was.
    void PutExitCode(const Outcome& outcome);

    // Appends what is to be added, if that has not been done. Lost as above.
    void Append();
    [[nodiscard]] bool IsAppended() const { return is_appended_; }

  private:
    Outcome OpenLog();
    [[nodiscard]] bool IsWithinLimit() const;
    void BeginEntry(std::span<const char* const> words);
    void AddInput(std::string_view input);
    void MakeEnding(const Outcome& outcome);
    void AppendText();
    bool AmendIn(const char* path, const std::string& present, bool is_there);
    void AmendText();

    static constexpr std::chrono::seconds kLongestWait{10};

    OpenedFile file_;           // from the start of the run until the text is appended
    bool is_begun_ = false;     // the log could be opened
    bool is_appended_ = false;  // the text stands in it, or is lost
    // Both have the memory for their largest once room is reserved, so that a run that has changed
    // something is recorded without needing more.
    std::string text_;    // what the run adds
    std::string ending_;  // of the entry that is chosen, as it shall be
    std::string notice_;  // error block of a failed notification
    Ending place_;
    size_t appended_at_ = 0;  // where the text was appended
    std::chrono::seconds wait_ = kLongestWait;
};

// Fills "buffer" of "size" bytes with the local time as "11/16/2026 19:00:05" and returns the
// length written, 0 when it does not fit.
size_t GetTimeStamp(char* buffer, size_t size);
