#include "commands/parse_command.h"

#include <algorithm>
#include <string_view>

#include "base/text.h"
#include "commands/actions.h"
#include "model/vocabulary.h"

namespace {

// What the command line gives a property or name, as it is kept. False when it may not be.
bool TakeAs(ValueKind kind, std::string& value) {
    if (kind == ValueKind::kSwitch) {
        const bool is_switch = value == "0" || value == "1";
        value = value == "1" ? switch_on : switch_off;
        return is_switch;
    }
    // A line end would begin a line of its own in kfx.conf.
    return kind != ValueKind::kText ||
           (IsXmlText(value) && value.find_first_of("\n\r") == std::string::npos);
}

// Each function that takes words returns false where they are none of a command line.
class Parser {
  public:
    explicit Parser(std::span<const char* const> words) : words_(words) {}

    bool Parse() {
        for (std::string word; Take(word);) {
            if (const ActionRow* row = FindAction(word); row != nullptr) {
                words_ = words_.subspan(row->object.empty() ? 0 : 1);
                command_.action = row->action;
                if (row->rest != Rest::kMoreWords) {
                    return TakeRest(*row);
                }
            } else if (word == "-config") {
                return TakeConfig();
            } else if (!TakeTopLevelWord(word)) {
                return false;
            }
        }
        return command_.action != Action::kNoAction;
    }
    Command& command() { return command_; }

  private:
    bool Take(std::string& value) {
        if (words_.empty()) {
            return false;
        }
        value = words_.front();
        words_ = words_.subspan(1);
        return true;
    }

    // The action that begins with "word", or with it and the next word.
    [[nodiscard]] const ActionRow* FindAction(std::string_view word) const {
        const std::string_view next = words_.empty() ? "" : words_.front();
        const auto actions = ActionTable();
        const auto row = std::ranges::find_if(actions, [&](const ActionRow& one) {
            return one.word == word && one.rest != Rest::kVariable &&
                   (one.object.empty() || one.object == next);
        });
        return row == actions.end() ? nullptr : &*row;
    }

    bool TakeTopLevelWord(std::string_view word) {
        if (word == "-f") {
            command_.names_map = true;
            return Take(command_.map);
        }
        if (word == "-nonotify") {
            std::string name;
            return Take(name) && Silence(name, command_.silenced);
        }
        // Behind -add, -update and -remove, a word that is no object is looked at like any other.
        return (word == "-add" || word == "-update" || word == "-remove") && !words_.empty();
    }

    bool TakeConfig() {
        std::string what;
        if (!Take(command_.config_file) || !Take(what) || !Take(command_.config_argument)) {
            return false;
        }
        command_.action = what == "-get" ? Action::kGetConfigValue : Action::kSetConfigValue;
        return (what == "-get" || what == "-set") && words_.empty();
    }

    bool TakeRest(const ActionRow& row) {
        switch (row.rest) {
            case Rest::kAnything:
                return true;
            case Rest::kSwitch:
                return Take(command_.security) && words_.empty() &&
                       (command_.security == switch_on || command_.security == switch_off);
            case Rest::kOptions:
                return TakeOptions(row);
            case Rest::kNewElement:
                return TakeOptions(row) && HasWhatItNeeds(row);
            case Rest::kChanges:
                return TakeOptions(row) && !command_.name.empty() && !command_.settings.empty();
            default:
                return words_.empty();
        }
    }

    bool TakeOptions(const ActionRow& row) {
        std::string word;
        std::string value;
        while (Take(word)) {
            if (!Take(value) || !TakeOption(row, word, value)) {
                return false;
            }
        }
        return true;
    }

    bool TakeOption(const ActionRow& row, const std::string& word, const std::string& value) {
        if (word == row.target) {
            command_.name = value;
            return true;
        }
        if (word == "-platform" && row.action == Action::kAddSystem) {
            command_.platform = value;
            platform_given_ = true;
            return true;
        }
        if (word == "-newname" && row.rest == Rest::kChanges) {
            return !value.empty() && Record(row, Property::kName, value);
        }
        return row.rest != Rest::kOptions && TakeProperty(row, word, value);
    }

    bool TakeProperty(const ActionRow& row, const std::string& word, std::string value) {
        for (const PropertyRow& property : kPropertyTable) {
            if (word.substr(0, 1) == "-" && word.substr(1) == property.key &&
                Has(row.owner, property.property)) {
                return TakeAs(property.kind, value) && Record(row, property.property, value);
            }
        }
        return false;
    }

    bool Record(const ActionRow& row, Property property, std::string value) {
        static constexpr size_t kMostChanges = 30;
        command_.settings.push_back({property, value});
        return row.rest != Rest::kChanges || command_.settings.size() <= kMostChanges;
    }

    // Whether nothing is missing, or too much: a console may have its platform's address instead of
    // one of its own.
    bool HasWhatItNeeds(const ActionRow& row) {
        for (const Property property : PropertiesOf(row.owner)) {
            const std::string* value = property == Property::kName
                                           ? &command_.name
                                           : NewValue(command_.settings, property);
            if (property == Property::kAddress && platform_given_) {
                if (value != nullptr || command_.platform.empty()) {
                    return false;
                }
            } else if (!RowOf(property).initial && (value == nullptr || value->empty())) {
                return false;
            }
        }
        // A new element that is not logged has no events either, unless asked for.
        const std::string* logging = NewValue(command_.settings, Property::kLogging);
        if (logging != nullptr && *logging == switch_off &&
            NewValue(command_.settings, Property::kEvents) == nullptr) {
            command_.settings.push_back({Property::kEvents, std::string(switch_off)});
        }
        return true;
    }

    std::span<const char* const> words_;
    Command command_;
    bool platform_given_ = false;
};

}  // namespace

Result<Command> ParseCommand(std::span<const char* const> words) {
    Parser parser(words);
    if (!parser.Parse()) {
        return Outcome(ExitCode::kInvalidArgument,
                       "Invalid or missing argument. Use \"-h\" to display help.");
    }
    return std::move(parser.command());
}

std::vector<ParsedCommand> ParseCommands(std::span<const ScriptCommand> commands) {
    std::vector<ParsedCommand> parsed;
    parsed.reserve(commands.size());
    for (const ScriptCommand& next : commands) {
        parsed.push_back({next, ParseCommand(next.words.subspan(1))});
    }
    return parsed;
}
