// tqs: the words of its command line, and what is left to say. Options are CLI11's.
#include <CLI/CLI.hpp>
#include <charconv>
#include <new>
#include <string>

#include "base/complaints.h"
#include "base/files.h"
#include "base/paths.h"
#include "base/process.h"
#include "commands/actions.h"
#include "frontend/tqs_change.h"
#include "frontend/tqs_commands.h"

namespace {

// What the words of "list" stand for, once all are known to be words of a command line.
struct ListWords {
    std::vector<std::string> names;
    std::string kind;
    std::vector<std::string> where;
    std::vector<std::string> fields;
    std::string sort;
    std::string format = "table";
    std::string map = paths::kSystemMap;
};

constexpr auto kFormats =
    std::to_array<std::pair<const char*, Listing::Format>>({{"table", Listing::Format::kTable},
                                                            {"csv", Listing::Format::kCsv},
                                                            {"json", Listing::Format::kJson},
                                                            {"names", Listing::Format::kNames}});

Outcome Invalid(const std::string& message) {
    return {ExitCode::kInvalidArgument, message};
}

Result<Listing::Format> ParseFormat(const std::string& word) {
    std::vector<std::string> known;
    for (const auto& [name, format] : kFormats) {
        if (word == name) {
            return format;
        }
        known.emplace_back(name);
    }
    return UnknownWord("format", word, known);
}

Outcome TakeKeys(const ListWords& words, Listing& listing) {
    for (const std::string& text : words.where) {
        const Result<Filter> filter = ParseFilter(text);
        if (!filter.ok()) {
            return filter.outcome();
        }
        listing.filters.push_back(*filter);
    }
    for (const std::string& field : words.fields) {
        const std::optional<Key> key = FindKey(field);
        if (!key) {
            return UnknownKey(field);
        }
        listing.fields.push_back(*key);
    }
    listing.sort = words.sort.empty() ? std::nullopt : FindKey(words.sort);
    return words.sort.empty() || listing.sort ? Outcome() : UnknownKey(words.sort);
}

Result<Listing> ParseListing(const ListWords& words) {
    Listing listing;
    listing.names = words.names;
    const Result<Listing::Format> format = ParseFormat(words.format);
    if (!format.ok()) {
        return format.outcome();
    }
    listing.format = *format;
    if (!words.kind.empty() && words.kind != "platform" && words.kind != "console") {
        return UnknownWord("kind", words.kind, {"platform", "console"});
    }
    if (!words.kind.empty()) {
        listing.kind = words.kind == "platform" ? Owner::kPlatform : Owner::kConsole;
    }
    if (listing.format == Listing::Format::kNames && !words.fields.empty()) {
        return Invalid("--format names takes no --fields.");
    }
    Outcome outcome = TakeKeys(words, listing);
    return outcome.ok() ? Result(std::move(listing)) : outcome;
}

Result<int> RunList(const ListWords& words) {
    Result<Listing> listing = ParseListing(words);
    return listing.ok() ? ListItems(words.map, std::move(*listing)) : listing.outcome();
}

constexpr const char* kMapHelp =
    "A map, or an inventory in CSV or JSON; \"-\" for standard input; without it the product's map";

void AddList(CLI::App& app, ListWords& words) {
    CLI::App* list = app.add_subcommand("list", "Look platforms and consoles up");
    list->add_option("NAME", words.names, "Only those of these names")->type_name("");
    list->add_option("--kind", words.kind, "Only platforms, or consoles")
        ->type_name("platform|console");
    list->add_option("--where", words.where,
                     "Only those whose value matches the shell pattern, or with != does not; all "
                     "must hold")
        ->type_name("KEY=GLOB|KEY!=GLOB")
        ->allow_extra_args(false);
    list->add_option("--fields", words.fields, "These keys, in this order")
        ->type_name("KEY[,KEY]")
        ->delimiter(',')
        ->allow_extra_args(false);
    list->add_option("--sort", words.sort, "By this key, instead of in the order of the map")
        ->type_name("KEY");
    list->add_option("--format", words.format, "A table unless another is asked for")
        ->type_name("table|csv|json|names");
    list->add_option("--map", words.map, kMapHelp)->type_name("MAP");
    std::string keys = "Keys:";
    for (const Key& key : Keys()) {
        keys += " " + std::string(key.word);
    }
    list->footer(keys + "\n");
}

// What the words of "diff" stand for.
struct DiffWords {
    std::string before;
    std::string now;
    bool is_text = false;
    bool is_json = false;
    bool is_commands = false;
};

void AddDiff(CLI::App& app, DiffWords& words) {
    CLI::App* diff = app.add_subcommand("diff", "Compare two inventories");
    diff->add_option("OLD", words.before,
                     "A map, or an inventory in CSV or JSON; \"-\" for standard input")
        ->type_name("")
        ->required();
    diff->add_option("NEW", words.now, "Another")->type_name("")->required();
    CLI::Option* text =
        diff->add_flag("--text", words.is_text, "A line for each difference, which is the default");
    CLI::Option* json = diff->add_flag("--json", words.is_json, "The same as data");
    diff->add_flag("--commands", words.is_commands, "Commands that make of OLD what NEW says")
        ->excludes(text)
        ->excludes(json);
    json->excludes(text);
}

Result<int> RunDiff(const DiffWords& words) {
    const DiffForm form = words.is_json       ? DiffForm::kJson
                          : words.is_commands ? DiffForm::kCommands
                                              : DiffForm::kText;
    return DiffMaps(words.before, words.now, form);
}

// What the words of "apply" and "sync" stand for.
struct ChangeWords {
    std::string source;
    ScriptOptions options;
    bool keep = false;
    std::optional<std::string> wait;
    std::vector<std::string> silenced;
};

std::vector<std::string> WordsOfNotifications() {
    std::vector<std::string> words;
    for (const NotificationRow& row : NotificationTable()) {
        if (!row.word.empty()) {
            words.emplace_back(row.word);
        }
    }
    return words;
}

CLI::App* AddChange(CLI::App& app, ChangeWords& words, const char* name, const char* help) {
    CLI::App* change = app.add_subcommand(name, help);
    change->add_flag("--dry-run", words.options.is_trial, "Only print what would differ");
    change
        ->add_option("--wait", words.wait,
                     "Wait so long for the lock, instead of as long as it takes")
        ->type_name("SECONDS");
    change->add_option("--no-notify", words.silenced, "Do not notify them")
        ->type_name(CLI::detail::join(WordsOfNotifications(), "|"))
        ->allow_extra_args(false);
    change->add_option("--map", words.options.map, "Another map than the product's")
        ->type_name("MAP");
    return change;
}

void AddApply(CLI::App& app, ChangeWords& words) {
    CLI::App* apply = AddChange(app, words, "apply", "Make many changes as one, or none of them");
    apply->add_option("SCRIPT", words.source, "Commands of tqsmgr, or \"-\" for standard input")
        ->type_name("")
        ->required();
    apply->add_flag("--keep-going", words.options.keeps_going, "Pass over what is refused");
}

void AddSync(CLI::App& app, ChangeWords& words) {
    CLI::App* sync = AddChange(app, words, "sync", "Make the map what an inventory says");
    sync->add_option("INVENTORY", words.source, "CSV, JSON or a map, or \"-\" for standard input")
        ->type_name("")
        ->required();
    sync->add_flag("--keep", words.keep, "Leave what the inventory does not name");
}

Outcome TakeOptions(ChangeWords& words) {
    for (const std::string& name : words.silenced) {
        if (!Silence(name, words.options.silenced)) {
            return UnknownWord("notification", name, WordsOfNotifications());
        }
    }
    if (words.wait) {
        unsigned seconds = 0;
        const char* end = words.wait->data() + words.wait->size();
        const auto [stop, error] = std::from_chars(words.wait->data(), end, seconds);
        if (error != std::errc() || stop != end) {
            return Invalid("--wait: \"" + *words.wait + "\" is no number of seconds.");
        }
        words.options.wait = std::chrono::seconds(seconds);
    }
    return {};
}

Result<int> RunApply(ChangeWords& words) {
    Outcome outcome = TakeOptions(words);
    return outcome.ok() ? ApplyScript(words.source, words.options) : outcome;
}

Result<int> RunSync(ChangeWords& words) {
    Outcome outcome = TakeOptions(words);
    return outcome.ok() ? SyncInventory(words.source, words.keep, words.options) : outcome;
}

// The words that could have been meant by one that is not known.
std::vector<std::string> KnownWords(const CLI::App& app, bool is_option) {
    std::vector<std::string> known;
    if (is_option) {
        for (const CLI::Option* option : app.get_options()) {
            for (const std::string& name : option->get_lnames()) {
                known.push_back("--" + name);
            }
        }
        return known;
    }
    for (const CLI::App* command : app.get_subcommands({})) {
        known.push_back(command->get_name());
    }
    return known;
}

// What is wrong with the command line, with a hint where a word is not known.
Outcome Complaint(const CLI::App& app, const CLI::ParseError& error) {
    const auto chosen = app.get_subcommands();
    const CLI::App& where = chosen.empty() ? app : *chosen.front();
    const std::vector<std::string> rest = where.remaining(true);
    if (!rest.empty()) {
        const bool is_option = rest.front().starts_with("-");
        if (is_option || chosen.empty()) {
            return UnknownWord(is_option ? "option" : "command", rest.front(),
                               KnownWords(where, is_option));
        }
        return Invalid("Nothing is expected behind \"" + where.get_name() + "\" but \"" +
                       rest.front() + "\" stands there.");
    }
    if (chosen.empty()) {
        return Invalid("A command is missing. See \"tqs --help\".");
    }
    const std::string text = error.what();
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ArgumentMismatch)) {
        return Invalid("\"" + text.substr(0, text.find(':')) + "\" takes one value.");
    }
    const std::vector<std::string> before = app.remaining();
    return Invalid(before.empty() ? text : "Options stand behind the command.");
}

void PrintError(const Outcome& outcome) {
    if (outcome.cause()) {
        const std::string& place = outcome.cause()->place;
        ComplainOnOneLine(place + (place.empty() ? "" : ": ") + outcome.cause()->text);
    } else if (!outcome.message().empty()) {
        ComplainOnOneLine(outcome.message());
    }
    PrintComplaints(true);
}

Result<int> Print(const std::string& text) {
    if (!WriteAll(STDOUT_FILENO, text)) {
        return LostOutput("standard output");
    }
    return 0;
}

Result<int> Obey(int argc, char** argv) {
    CLI::App app(
        "Look at the inventory of consoles, judge it, compare it, and change it in bulk.\n"
        "\"tqs COMMAND --help\" tells of one command.",
        "tqs");
    app.set_version_flag("--version", "TQS version " TQS_VERSION " build date " TQS_BUILD_DATE);
    app.set_help_flag("--help", "Print this help and exit");
    app.require_subcommand(1);
    ListWords list;
    AddList(app, list);
    std::string checked = paths::kSystemMap;
    app.add_subcommand("check", "Judge a whole map: a line for each fault, with its place")
        ->add_option("MAP", checked, kMapHelp)
        ->type_name("");
    DiffWords diff;
    AddDiff(app, diff);
    std::string exported = paths::kSystemMap;
    app.add_subcommand("export", "Print the commands that make the inventory of an empty one")
        ->add_option("MAP", exported, kMapHelp)
        ->type_name("");
    ChangeWords applied;
    AddApply(app, applied);
    ChangeWords synced;
    AddSync(app, synced);
    for (CLI::App* command : app.get_subcommands({})) {
        command->set_help_flag("--help", "Print this help and exit");
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        return Print(app.help());
    } catch (const CLI::CallForVersion& version) {
        return Print(std::string(version.what()) + "\n");
    } catch (const CLI::ParseError& error) {
        return Complaint(app, error);
    }
    if (app.got_subcommand("list")) {
        return RunList(list);
    }
    if (app.got_subcommand("diff")) {
        return RunDiff(diff);
    }
    if (app.got_subcommand("apply")) {
        return RunApply(applied);
    }
    if (app.got_subcommand("sync")) {
        return RunSync(synced);
    }
    return app.got_subcommand("check") ? CheckMap(checked) : ExportMap(exported);
}

}  // namespace

int main(int argc, char** argv) {
    PrepareProcess();
    Result<int> status = 0;
    try {
        status = Obey(argc, argv);
    } catch (const std::bad_alloc&) {
        status = Outcome(ExitCode::kWriteFailed, "Out of memory.");
    }
    PrintError(status.outcome());
    return status.ok() ? *status : Number(status.outcome().code());
}
