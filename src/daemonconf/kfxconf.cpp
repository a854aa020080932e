#include "daemonconf/kfxconf.h"

#include <algorithm>
#include <optional>
#include <string>

#include "base/paths.h"
#include "model/lookups.h"
#include "model/vocabulary.h"

using enum Property;

namespace {

// Whose value a column has.
enum Source {
    kElement,   // of the platform or console that the line is about
    kTopLevel,  // of the platform that it is inside of, or of itself
    kPlatform,  // the same, but a standalone console has something else there
};

constexpr std::string_view kTwoQuotes = "\"\"";
// A text of its own, since nothing may be copied from a null pointer.
constexpr std::string_view kEmpty = kTwoQuotes.substr(2);

struct Column {
    Property property;
    Source source = kElement;
    // What stands in its place where a platform or standalone console has no such value.
    std::string_view otherwise = kEmpty;
    std::string_view when_empty = kEmpty;
    std::string_view behind = " ";  // the blank before the next field, with the quotes of both
};

constexpr auto kColumns = std::to_array<Column>({
    {.property = kName},
    {.property = kAddress, .source = kTopLevel},
    {.property = kPort},
    {.property = kPort, .source = kPlatform, .otherwise = "23"},
    {.property = kMappedPort},
    {.property = kModel, .source = kPlatform, .otherwise = "<other>"},
    // A standalone console has its address here.
    {.property = kName, .source = kPlatform, .behind = " \""},
    {.property = kType, .otherwise = unknown_value, .behind = "\" "},
    {.property = kLogging},
    {.property = kEvents},
    {.property = kEnable},
    {.property = kAuth},
    {.property = kEventFile, .when_empty = kTwoQuotes, .behind = " \""},
    {.property = kDescription, .when_empty = "none", .behind = "\" "},
    {.property = kTemplate, .source = kPlatform, .when_empty = kTwoQuotes},
    {.property = kFirstTsPort, .source = kPlatform, .when_empty = kTwoQuotes},
    {.property = kLastTsPort, .source = kPlatform, .when_empty = kTwoQuotes, .behind = "\n"},
});
static_assert(kColumns.size() == std::tuple_size_v<KfxConfLine>);

// The first property, in the order of the table, that an element lacks for its line. Nobody looks
// at the address of a console that is inside something.
std::optional<Property> FirstMissing(const Element& element) {
    std::optional<Property> missing;
    for (const auto& [property, source, otherwise, when_empty, behind] : kColumns) {
        const bool is_lacking = !element.values.Has(property) && Has(element.owner, property) &&
                                (property != kAddress || element.parent == nullptr);
        if (is_lacking && (!missing || property < *missing)) {
            missing = property;
        }
    }
    return missing;
}

// A switch is 1 or 0.
std::string_view FieldOf(const Element& element, const Column& column) {
    const bool is_own = column.source == kElement || element.parent == nullptr;
    const Element& source = is_own ? element : *element.parent;
    if (source.owner == Owner::kConsole && column.source == kPlatform) {
        return column.property == kName ? source.values[kAddress] : column.otherwise;
    }
    const std::string_view value = source.values[column.property];
    if (RowOf(column.property).kind == ValueKind::kSwitch) {
        return value == switch_on ? "1" : "0";
    }
    return source.values.Has(column.property) ? value : column.otherwise;
}

}  // namespace

Result<KfxConfLine> GetKfxConfData(const Element& element) {
    if (const auto missing = FirstMissing(element)) {
        return Outcome(ExitCode::kIncompleteMap,
                       PropertyMissing(*element.node, *missing).message());
    }
    KfxConfLine line;
    std::ranges::transform(kColumns, line.begin(),
                           [&element](const Column& column) { return FieldOf(element, column); });
    return line;
}

Outcome WriteFields(Output& out, const KfxConfLine& line) {
    for (size_t i = 0; i < line.size(); ++i) {
        const Column& column = kColumns[i];
        out.Put(line[i].empty() ? column.when_empty : line[i]);
        out.Put(column.behind);
    }
    return out.HasFailed()
               ? Failure(ExitCode::kWriteFailed, "Write failed for \"%s\".", paths::kKfxConf)
               : Outcome();
}

Outcome WriteKfxConf(Output& out, const Inventory& inventory, std::string_view name) {
    const Result<RVT_Node*> map = inventory.NeedSystemMap(ExitCode::kIncompleteMap);
    if (!map.ok()) {
        return map.outcome();
    }
    bool has_line = name.empty();
    Outcome outcome = VisitElements(**map, [&](const Element& element) {
        const Result<KfxConfLine> line = GetKfxConfData(element);
        if (!line.ok()) {
            return element.parent == nullptr ? line.outcome() : Outcome();
        }
        if (!name.empty() && line->front() != name) {
            return Outcome();
        }
        has_line = true;
        return WriteFields(out, *line);
    });
    return !outcome.ok() || has_line ? outcome
                                     : Failure(ExitCode::kLookupFailed, "Console \"%s\" not found.",
                                               std::string(name).c_str());
}
