#include "plan/script.h"

#include <algorithm>
#include <set>

#include "base/paths.h"
#include "base/quoted.h"
#include "commands/actions.h"
#include "model/checks.h"
#include "model/vocabulary.h"
#include "plan/order.h"
#include "run/sequence.h"
#include "translog/shell_text.h"
#include "xml/encoding.h"
#include "xml/rvt_xml_writer.h"

static std::string OnOneLine(std::string text) {
    std::ranges::replace(text, '\n', ' ');
    std::ranges::replace_if(
        text, [](char c) { return c >= 0 && c < ' '; }, '?');
    return text;
}

// What the commands give that no reference file lists; if that is not it, what one was refused for.
static std::vector<Obstacle> WhyRefused(const std::vector<Step>& steps, const Step& refused,
                                        const Outcome& outcome) {
    ReferenceFiles files;
    std::set<std::pair<std::string, std::string>> told;
    std::vector<Obstacle> obstacles;
    for (const Step& step : steps) {
        const Owner owner = RowOf(step.command.action).owner;
        for (const NameValue& setting : step.command.settings) {
            const Outcome form = CheckForm(owner, setting.property, setting.value, files);
            if (!form.ok()) {
                const std::string text = std::string(RowOf(setting.property).key) + ' ' +
                                         Quoted(setting.value) + ": " + OnOneLine(form.message());
                obstacles.insert(obstacles.end(), told.emplace(step.subject, text).second ? 1 : 0,
                                 Obstacle{step.subject, text, form.code()});
            }
        }
    }
    if (obstacles.empty()) {
        obstacles.push_back({refused.subject, OnOneLine(outcome.message()), outcome.code()});
    }
    return obstacles;
}

// Whom the map cannot be written for, in the encoding of "tree": a value can hold what the encoding
// lacks, a comment or a name in a cache cannot.
static std::vector<Obstacle> WhyUnwritable(const std::vector<Step>& steps,
                                           const RVT_XML_Tree& tree) {
    const std::string encoding = EncodingOf(tree);
    std::vector<Obstacle> obstacles;
    for (const Step& step : steps) {
        std::string converted;
        if (!step.document.empty() && !ConvertDocument(step.document, encoding, converted)) {
            obstacles.push_back(
                {step.subject,
                 Quoted(encoding) + ", the encoding of the map, lacks what its cache holds",
                 ExitCode::kWriteFailed});
        }
    }
    if (obstacles.empty()) {
        obstacles.push_back({"map", "cannot be written in its encoding " + Quoted(encoding),
                             ExitCode::kWriteFailed});
    }
    return obstacles;
}

static std::vector<Obstacle> WhatDiffers(const Comparison& comparison) {
    std::vector<Obstacle> obstacles;
    for (const Difference& difference : comparison.Differences()) {
        obstacles.push_back({"would still differ", TextOf(difference)});
    }
    return obstacles;
}

// Runs the steps on a copy of an inventory and says what keeps them from leading to "now".
static std::vector<Obstacle> Try(const std::vector<Step>& steps, Inventory& copy,
                                 const Outline& now) {
    Sequence sequence(copy, paths::kSystemMap);
    for (const Step& step : steps) {
        if (const Outcome outcome = sequence.Do(step.command, step.document, "cache");
            !outcome.ok()) {
            return outcome.code() == ExitCode::kWriteFailed ? WhyUnwritable(steps, copy.Tree())
                                                            : WhyRefused(steps, step, outcome);
        }
    }
    const Result<bool> fits = FitsItsEncoding(copy.Tree());
    if (!fits.ok() || !*fits) {
        return WhyUnwritable(steps, copy.Tree());
    }
    return WhatDiffers(Comparison(OutlineOf(copy), now));
}

Script UntriedScript(const Comparison& comparison) {
    Script script;
    if (comparison.IsEqual()) {
        return script;
    }
    Work work(comparison);
    if (work.obstacles.empty()) {
        script.steps = InOrder(work, comparison);
    }
    script.obstacles = std::move(work.obstacles);
    if (script.steps.empty() && script.obstacles.empty()) {
        script.obstacles = WhatDiffers(comparison);
    }
    return script;
}

Script ScriptFromTo(const Inventory& before, const Outline& now) {
    Script script = UntriedScript(Comparison(OutlineOf(before), now));
    if (!script.steps.empty()) {
        Inventory copy;
        copy.Tree() = before.Tree().Copy();
        script.obstacles = Try(script.steps, copy, now);
    }
    if (!script.obstacles.empty()) {
        script.steps.clear();
    }
    return script;
}

static void AddSettings(const Command& command, const ActionRow& row,
                        std::vector<std::string>& words) {
    for (const auto& [property, value] : command.settings) {
        const PropertyRow& one = RowOf(property);
        const bool is_rename = row.rest == Rest::kChanges && property == Property::kName;
        const bool is_switch = one.kind == ValueKind::kSwitch;
        words.push_back("-" + std::string(is_rename ? "newname" : one.key));
        words.push_back(!is_switch ? value : value == switch_on ? "1" : "0");
    }
}

// The words of a command line: the program, the action, options and values in turn.
static std::vector<std::string> WordsOf(const Command& command) {
    const ActionRow& row = RowOf(command.action);
    std::vector<std::string> words = {"tqsmgr", std::string(row.word)};
    if (row.rest == Rest::kSwitch) {
        words.push_back(command.security);
        return words;
    }
    words.insert(words.end(), {std::string(row.object), std::string(row.target), command.name});
    if (!command.platform.empty()) {
        words.insert(words.end(), {"-platform", command.platform});
    }
    AddSettings(command, row, words);
    return words;
}

void PrintScript(const Script& script, Output& out) {
    for (const Step& step : script.steps) {
        const std::vector<std::string> words = WordsOf(step.command);
        for (size_t i = 0; i < words.size(); ++i) {
            const bool is_value = i % 2 == 0 && (i > 2 || (i == 2 && words.size() == 3));
            out.Put(i == 0 ? "" : " ");
            out.Put(is_value ? ShellWord(words[i], false) : words[i]);
        }
        if (step.command.action == Action::kUpdateCache) {
            std::string document = " ";
            AppendHereDocument(step.document, document);
            out.Put(document);
        } else {
            out.Put("\n");
        }
    }
}

std::vector<ParsedCommand> CommandsOf(const Script& script) {
    std::vector<ParsedCommand> commands;
    for (const Step& step : script.steps) {
        const std::vector<std::string> words = WordsOf(step.command);
        auto* kept = static_cast<const char**>(arena::Allocate(words.size() * sizeof(char*)));
        std::ranges::transform(words, kept, arena::Copy);
        commands.push_back({{commands.size(), {kept, words.size()}, {}}, step.command});
        if (step.command.action == Action::kUpdateCache) {
            commands.back().input = step.document;
        }
    }
    return commands;
}
