#include "report/script.h"

#include <algorithm>
#include <set>

#include "base/paths.h"
#include "commands/actions.h"
#include "model/checks.h"
#include "model/vocabulary.h"
#include "report/order.h"
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
static std::vector<std::string> WhyRefused(const std::vector<Step>& steps, const Step& refused,
                                           const Outcome& outcome) {
    ReferenceFiles files;
    std::set<std::string> told;
    std::vector<std::string> obstacles;
    for (const Step& step : steps) {
        const Owner owner = RowOf(step.command.action).owner;
        for (const NameValue& setting : step.command.settings) {
            const Outcome form = CheckForm(owner, setting.property, setting.value, files);
            if (!form.ok()) {
                const std::string line = step.subject + ": " +
                                         std::string(RowOf(setting.property).key) + ' ' +
                                         Quoted(setting.value) + ": " + OnOneLine(form.message());
                obstacles.insert(obstacles.end(), told.insert(line).second ? 1 : 0, line);
            }
        }
    }
    if (obstacles.empty()) {
        obstacles.push_back(refused.subject + ": " + OnOneLine(outcome.message()));
    }
    return obstacles;
}

// Whom the map cannot be written for, in the encoding of "tree": a value can hold what the encoding
// lacks, a comment or a name in a cache cannot.
static std::vector<std::string> WhyUnwritable(const std::vector<Step>& steps,
                                              const RVT_XML_Tree& tree) {
    const std::string encoding = EncodingOf(tree);
    std::vector<std::string> obstacles;
    for (const Step& step : steps) {
        std::string converted;
        if (!step.document.empty() && !ConvertDocument(step.document, encoding, converted)) {
            obstacles.push_back(step.subject + ": " + Quoted(encoding) +
                                ", the encoding of the map, lacks what its cache holds");
        }
    }
    if (obstacles.empty()) {
        obstacles.push_back("map: cannot be written in its encoding " + Quoted(encoding));
    }
    return obstacles;
}

// Runs the steps on a copy of an inventory and says what keeps them from leading to "now".
static std::vector<std::string> Try(const std::vector<Step>& steps, Inventory& copy,
                                    const Inventory& now) {
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
    std::vector<std::string> obstacles;
    for (const Difference& difference : Comparison(copy, now).Differences()) {
        obstacles.push_back("would still differ: " + TextOf(difference));
    }
    return obstacles;
}

Script ScriptFromTo(const Inventory& before, const Inventory& now) {
    Script script;
    const Comparison comparison(before, now);
    if (comparison.IsEqual()) {
        return script;
    }
    Work work(comparison);
    if (work.obstacles.empty()) {
        script.steps = InOrder(work, comparison);
    }
    script.obstacles = std::move(work.obstacles);
    if (script.obstacles.empty()) {
        Inventory copy;
        copy.Tree() = before.Tree().Copy();
        script.obstacles = Try(script.steps, copy, now);
    }
    if (!script.obstacles.empty()) {
        script.steps.clear();
    }
    return script;
}

Script ExportScript(const Inventory& now) {
    RVT_Node* map = RVT_Node::Create(RVT_ELEMENT);
    map->SetName(tag::SystemMap);
    SetAttributes(
        *map, {{serial_tag, "1"}, {security_tag, switch_off}, {version_tag, systemmap_version}});
    Inventory empty;
    empty.Tree().AddChild(map);
    return ScriptFromTo(empty, now);
}

static void PutOption(std::string_view option, std::string_view value, Output& out) {
    out.Put(" -");
    out.Put(option);
    out.Put(" ");
    out.Put(ShellWord(value, false));
}

static void PutSettings(const Command& command, const ActionRow& row, Output& out) {
    for (const auto& [property, value] : command.settings) {
        const PropertyRow& one = RowOf(property);
        const bool is_rename = row.rest == Rest::kChanges && property == Property::kName;
        const bool is_switch = one.kind == ValueKind::kSwitch;
        PutOption(is_rename ? "newname" : one.key,
                  !is_switch           ? value
                  : value == switch_on ? "1"
                                       : "0",
                  out);
    }
}

static void PutCommand(const Command& command, Output& out) {
    const ActionRow& row = RowOf(command.action);
    out.Put("tqsmgr ");
    out.Put(row.word);
    out.Put(row.object.empty() ? "" : " ");
    out.Put(row.object);
    if (row.rest == Rest::kSwitch) {
        out.Put(" " + ShellWord(command.security, false));
        return;
    }
    PutOption(row.target.substr(1), command.name, out);
    if (!command.platform.empty()) {
        PutOption("platform", command.platform, out);
    }
    PutSettings(command, row, out);
}

void PrintScript(const Script& script, Output& out) {
    for (const Step& step : script.steps) {
        PutCommand(step.command, out);
        if (step.command.action == Action::kUpdateCache) {
            std::string document = " ";
            AppendHereDocument(step.document, document);
            out.Put(document);
        } else {
            out.Put("\n");
        }
    }
}
