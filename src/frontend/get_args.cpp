#include "frontend/get_args.h"

#include <array>
#include <set>
#include <span>
#include <string_view>

#include "base/error.h"
#include "base/output.h"
#include "base/paths.h"
#include "base/text.h"
#include "frontend/option_table.h"
#include "model/vocabulary.h"
#include "run/rvt_exit.h"

Action action = kNoAction;
const char* xml_file = paths::kSystemMap;
bool notify_web = true;
bool notify_kfxd = true;
bool notify_lrp = true;
Options options;

[[noreturn]] static void ArgError() {
    RVTExit(Fail(ExitCode::kInvalidArgument,
                 "Invalid or missing argument. Use \"-h\" to display help."));
}

[[noreturn]] static void ShowHelp() {
    RVTExit(PrintLine(usage_msg));
}

[[noreturn]] static void ShowVersion() {
    RVTExit(PrintLine("TQS version " TQS_VERSION " build date " TQS_BUILD_DATE));
}

namespace {

// The words that are left, taken one by one.
class Words {
  public:
    Words(int first, int argc, char** argv)
        : words_(argv, static_cast<size_t>(argc)), next_(static_cast<size_t>(first)) {}

    [[nodiscard]] bool AreUsedUp() const { return next_ >= words_.size(); }
    // The next word, which stays; empty when there is none.
    [[nodiscard]] std::string_view Peek() const { return AreUsedUp() ? "" : words_[next_]; }
    // The next word; a missing one is an error of the command line.
    const char* Take() {
        if (AreUsedUp()) {
            ArgError();
        }
        return words_[next_++];
    }
    void EndHere() const {
        if (!AreUsedUp()) {
            ArgError();
        }
    }

  private:
    std::span<char*> words_;
    size_t next_;
};

std::string TakeValue(OptionKind kind, Words& words) {
    std::string value = words.Take();
    switch (kind) {
        case OptionKind::kText:
            return value;
        case OptionKind::kNonEmptyText:
            if (value.empty()) {
                ArgError();
            }
            return value;
        case OptionKind::kMapText:
            // A line end would begin a line of its own in kfx.conf.
            if (!IsXmlText(value) || value.find_first_of("\n\r") != std::string::npos) {
                ArgError();
            }
            return value;
        case OptionKind::kSwitch:
            if (value != "0" && value != "1") {
                ArgError();
            }
            return std::string(value == "1" ? switch_on : switch_off);
    }
    ArgError();
}

bool IsUpdate(Action of) {
    return of == kUpdatePlatform || of == kUpdateSystem;
}

void RecordChange(const Option& option) {
    NameValueList& list = options.name_val_list;
    if (list.count == NameValueList::kCapacity) {
        ArgError();
    }
    list.pairs.at(list.count++) = {std::string(option.property), options.*option.value};
}

// Takes the options of the action from the words that are left, and checks that none is missing.
void GetActionArgs(Action of, Words words) {
    std::set<std::string_view> given;
    while (!words.AreUsedUp()) {
        const std::string_view word = words.Take();
        const Option* option = FindOption(word, of);
        if (option == nullptr || given.count(option->excludes) != 0) {
            ArgError();
        }
        options.*option->value = TakeValue(option->kind, words);
        given.insert(word);
        if (IsUpdate(of) && !option->property.empty()) {
            RecordChange(*option);
        }
    }
    for (const Option& option : OptionTable()) {
        if ((option.required_by & of) != 0 && (options.*option.value).empty()) {
            ArgError();
        }
    }
    if (IsUpdate(of) && options.name_val_list.count == 0) {
        ArgError();
    }
    if (of == kAddSystem && options.platform_name.empty() && options.address.empty()) {
        ArgError();
    }
    // A new element that is not logged has no events either, unless asked for.
    const bool is_add = of == kAddPlatform || of == kAddSystem;
    if (is_add && options.logging == switch_off && given.count("-events") == 0) {
        options.events = switch_off;
    }
    action = of;
}

// An action that is named by a word and its object, and followed by its options.
struct Phrase {
    std::string_view word;
    std::string_view object;
    Action action;
};

constexpr std::array<Phrase, 9> kPhrases = {{
    {"-add", "platform", kAddPlatform},
    {"-add", "system", kAddSystem},
    {"-update", "platform", kUpdatePlatform},
    {"-update", "system", kUpdateSystem},
    {"-update", "cache", kUpdateCache},
    {"-remove", "platform", kRemovePlatform},
    {"-remove", "system", kRemoveSystem},
    {"-remove", "cache", kRemoveCache},
    {"-view", "kfxconf", kViewKfxConf},
}};

bool BeginsPhrase(std::string_view word) {
    return word == "-add" || word == "-update" || word == "-remove";
}

// The action of "word" and the object that follows it, which is taken; kNoAction for none.
Action TakePhrase(std::string_view word, Words& words) {
    for (const Phrase& phrase : kPhrases) {
        if (phrase.word == word && phrase.object == words.Peek()) {
            static_cast<void>(words.Take());
            return phrase.action;
        }
    }
    return kNoAction;
}

void TakeNotification(Words& words) {
    const std::string_view name = words.Take();
    if (name == "web") {
        notify_web = false;
    } else if (name == "kfxd") {
        notify_kfxd = false;
    } else {
        ArgError();
    }
}

void TakeSecurity(Words& words) {
    options.security = words.Take();
    if (options.security != switch_on && options.security != switch_off) {
        ArgError();
    }
    words.EndHere();
    action = kSetSecurity;
}

void TakeConfig(Words& words) {
    options.kfxd_conf_file = words.Take();
    const std::string_view what = words.Take();
    if (what == "-get") {
        options.get_kfxd_conf_value = words.Take();
        action = kGetConfigValue;
    } else if (what == "-set") {
        options.set_kfxd_conf_value = words.Take();
        action = kSetConfigValue;
    } else {
        ArgError();
    }
    words.EndHere();
}

// "-write kfxconf" and "-view security", which have no options.
void TakeObject(std::string_view object, Action selected, Words& words) {
    if (words.Take() != object) {
        ArgError();
    }
    words.EndHere();
    action = selected;
}

// Handles one word that stands before any action's options, with what belongs to it.
void TakeTopLevelWord(std::string_view word, Words& words) {
    if (word == "-V") {
        words.EndHere();
        ShowVersion();
    } else if (word == "-h") {
        ShowHelp();
    } else if (word == "-f") {
        xml_file = words.Take();
    } else if (word == "-U") {
        action = kConvertMap;
    } else if (word == "-nonotify") {
        TakeNotification(words);
    } else if (word == "-write") {
        TakeObject("kfxconf", kWriteKfxConf, words);
    } else if (word == "-view") {
        TakeObject("security", kViewSecurity, words);
    } else if (word == "-security") {
        TakeSecurity(words);
    } else if (word == "-config") {
        TakeConfig(words);
    } else if (!BeginsPhrase(word) || words.AreUsedUp()) {
        ArgError();
    }
    // After -add, -update and -remove, a word that is not an object is looked at like any other.
}

}  // namespace

void GetArgs(int argc, char** argv) {
    Words words(1, argc, argv);
    while (!words.AreUsedUp()) {
        const std::string_view word = words.Take();
        if (const Action phrase = TakePhrase(word, words); phrase != kNoAction) {
            GetActionArgs(phrase, words);
            return;
        }
        TakeTopLevelWord(word, words);
    }
    if (action == kNoAction) {
        ArgError();
    }
}
