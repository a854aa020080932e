#include "run/run.h"

#include <unistd.h>

#include "base/files.h"
#include "base/output.h"
#include "base/paths.h"
#include "base/process.h"
#include "commands/actions.h"
#include "commands/security.h"
#include "daemonconf/kfxconf.h"
#include "model/conversion.h"
#include "run/config_file.h"
#include "run/kfxconf_file.h"
#include "run/notification.h"
#include "run/stdin_capture.h"
#include "xml/rvt_xml_parser.h"
#include "xml/rvt_xml_writer.h"

Outcome Run::Begin(std::span<const char* const> words) {
    return log_.LogCommandLine(words);
}

// Takes the lock and reads the map. What the parser only gives up leaves a tree that the command
// then finds incomplete, but the -config actions look at nothing in it.
Outcome Run::Open(const Command& command) {
    if (Outcome outcome = lock_.Lock(command.map); !outcome.ok()) {
        return outcome;
    }
    const bool is_config = RowOf(command.action).rest == Rest::kVariable;
    const bool is_top = is_config || command.action == Action::kViewSecurity;
    const Result<bool> is_whole = ParseXMLFile(command.map, inventory_.Tree(),
                                               is_top ? DocumentPart::kTop : DocumentPart::kWhole);
    return is_whole.ok() && !*is_whole && is_config ? Outcome(ExitCode::kNotWellFormed, "")
                                                    : is_whole.outcome();
}

Outcome Run::Print(std::string_view text, const char* name) {
    if (Outcome outcome = lock_.Unlock(); !outcome.ok()) {
        return outcome;
    }
    return WriteAll(STDOUT_FILENO, text) ? Outcome() : LostOutput(name);
}

// What an action that changes nothing was asked for.
Run::Answer Run::AnswerTo(const Command& command) {
    Answer answer;
    if (command.action == Action::kViewKfxConf) {
        Output out(answer.text);
        answer.outcome = WriteKfxConf(out, inventory_, command.name);
        static_cast<void>(out.Flush());
        answer.name = paths::kKfxConf;
    } else if (command.action == Action::kViewSecurity) {
        const Result<std::string_view> security = ViewSecurity(inventory_);
        answer.outcome = security.outcome();
        answer.text = security.ok() ? std::string(*security) + '\n' : "";
    } else {
        const Result<std::string> value =
            ReadConfigFile(command.config_file, command.config_argument);
        answer.outcome = value.outcome();
        answer.text = value.ok() ? *value : "";
    }
    return answer;
}

// Captures the document, records it in the log and installs it. Its tree lives on in the map.
Outcome Run::UpdateCache(const Command& command) {
    CapturedInput input;
    if (Outcome outcome = input.WriteStdInToTempFile(); !outcome.ok()) {
        return outcome;
    }
    if (Outcome outcome = log_.LogStdIn(input.Text()); !outcome.ok()) {
        return outcome;
    }
    RVT_XML_Tree cache_document;
    const Result<bool> is_whole = ParseXMLText(input.Text(), input.Name(), cache_document);
    return is_whole.ok() ? Execute(command, inventory_, cache_document) : is_whole.outcome();
}

Outcome Run::Convert(const Command& command) {
    const Result<bool> is_converted = DoVersionConversion(inventory_);
    return is_converted.ok() && *is_converted ? WriteMap(command.map) : is_converted.outcome();
}

Outcome Run::Change(const Command& command) {
    switch (command.action) {
        case Action::kUpdateCache:
            return UpdateCache(command);
        case Action::kConvertMap:
            return Convert(command);
        case Action::kSetConfigValue:
            return WriteConfigFile(command.config_file, command.config_argument,
                                   [this] { return lock_.BeginChange(); });
        default:
            return Execute(command, inventory_);
    }
}

Outcome Run::WriteMap(const std::string& map) {
    return WriteXMLFile(map, inventory_.Tree(), [this] { return lock_.BeginChange(); });
}

Outcome Run::RegenerateKfxConf(const std::string& map) {
    Outcome outcome = lock_.BeginChange();
    return outcome.ok() ? CreateKfxConfFile(inventory_, map) : outcome;
}

// Writes what the change asks for. The entry comes before the release of the lock, so that the log
// has the order of the runs.
Outcome Run::Commit(const Command& command) {
    const Follow& follow = RowOf(command.action).follow;
    if (follow.map) {
        if (Outcome outcome = WriteMap(command.map); !outcome.ok()) {
            return outcome;
        }
    }
    if (follow.kfxconf) {
        if (Outcome outcome = RegenerateKfxConf(command.map); !outcome.ok()) {
            return outcome;
        }
    }
    log_.PutExitCode({});
    return lock_.Unlock();
}

// A text that breaks off is printed as far as it goes, and the failure stays that of the text.
Outcome Run::Answered(const Command& command) {
    const Answer answer = AnswerTo(command);
    if (!answer.outcome.ok() && answer.text.empty()) {
        return answer.outcome;
    }
    Outcome printed = Print(answer.text, answer.name);
    const bool stays = !answer.outcome.ok() && printed.code() != ExitCode::kUnlockFailed;
    return stays ? answer.outcome : printed;
}

Outcome Run::Do(const Command& command) {
    if (Outcome outcome = Open(command); !outcome.ok()) {
        return outcome;
    }
    if (OnlyLooks(command.action)) {
        return Answered(command);
    }
    if (Outcome outcome = Change(command); !outcome.ok()) {
        return outcome;
    }
    if (Outcome outcome = Commit(command); !outcome.ok()) {
        return outcome;
    }
    AllowTermination();
    Notify(RowOf(command.action).follow.notify & ~command.silenced, log_);
    return {};
}

void Run::End(const Outcome& outcome) {
    log_.PutExitCode(outcome);
    static_cast<void>(lock_.Unlock());
    AllowTermination();
}
