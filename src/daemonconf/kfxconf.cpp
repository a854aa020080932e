#include "daemonconf/kfxconf.h"

#include <optional>
#include <string>

#include "base/paths.h"
#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

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

Owner OwnerOf(const RVT_Node& element) {
    return element.IsName(tag::Platform) ? Owner::kPlatform : Owner::kConsole;
}

// The first property, in the order of the table, that is missing among those that an owner has.
std::optional<Property> FirstMissing(Owner owner, const PropertyValues& values) {
    std::optional<Property> missing;
    for (const Column& column : kColumns) {
        if (Has(owner, column.property) && !values.Has(column.property) &&
            (!missing || column.property < *missing)) {
            missing = column.property;
        }
    }
    return missing;
}

// A switch is 1 or 0.
std::string_view FieldOf(const PropertyValues& values, Property property) {
    if (RowOf(property).kind == ValueKind::kSwitch) {
        return values[property] == switch_on ? "1" : "0";
    }
    return values[property];
}

std::string_view TopLevelField(const PropertyValues& values, Owner owner, const Column& column) {
    if (owner == Owner::kConsole && column.source == kPlatform) {
        return column.property == kName ? values[kAddress] : column.otherwise;
    }
    return Has(owner, column.property) ? FieldOf(values, column.property) : column.otherwise;
}

}  // namespace

Result<KfxConfLine> GetKfxConfData(const RVT_Node& element) {
    const Owner owner = OwnerOf(element);
    const PropertyValues values = GetPropertyValues(element, owner);
    if (const auto missing = FirstMissing(owner, values)) {
        return Outcome(ExitCode::kIncompleteMap, PropertyMissing(element, *missing).message());
    }
    KfxConfLine line;
    for (size_t i = 0; i < line.size(); ++i) {
        line[i] = TopLevelField(values, owner, kColumns[i]);
    }
    return line;
}

bool GetKfxConfConsoleData(const RVT_Node& console, KfxConfLine& line) {
    PropertyValues values = GetPropertyValues(console, Owner::kConsole);
    // Its own address is not looked at.
    values[kAddress] = "";
    if (FirstMissing(Owner::kConsole, values)) {
        return false;
    }
    for (size_t i = 0; i < line.size(); ++i) {
        if (kColumns[i].source == kElement) {
            line[i] = FieldOf(values, kColumns[i].property);
        }
    }
    return true;
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

namespace {

// Puts the lines that are wanted and notes whether there were any.
class Selection {
  public:
    Selection(Output& out, std::string_view name) : out_(out), name_(name) {}

    Outcome Put(const KfxConfLine& line) {
        if (!name_.empty() && line.front() != name_) {
            return {};
        }
        matched_ = true;
        return WriteFields(out_, line);
    }
    [[nodiscard]] bool LacksMatch() const { return !name_.empty() && !matched_; }

  private:
    Output& out_;
    std::string_view name_;
    bool matched_ = false;
};

}  // namespace

// The line of a top-level element and those of the consoles inside it.
static Outcome PutElement(const RVT_Node& element, Selection& selection) {
    const Result<KfxConfLine> line = GetKfxConfData(element);
    if (!line.ok()) {
        return line.outcome();
    }
    if (Outcome outcome = selection.Put(*line); !outcome.ok()) {
        return outcome;
    }
    for (const RVT_Node& console : LiveElements(element, tag::Console)) {
        KfxConfLine console_line = *line;
        if (!GetKfxConfConsoleData(console, console_line)) {
            continue;
        }
        if (Outcome outcome = selection.Put(console_line); !outcome.ok()) {
            return outcome;
        }
    }
    return {};
}

Outcome WriteKfxConf(Output& out, const Inventory& inventory, std::string_view name) {
    const Result<RVT_Node*> map = inventory.NeedSystemMap(ExitCode::kIncompleteMap);
    if (!map.ok()) {
        return map.outcome();
    }
    Selection selection(out, name);
    for (const RVT_Node& element : LiveElements(**map, tag::Platform, tag::Console)) {
        if (Outcome outcome = PutElement(element, selection); !outcome.ok()) {
            return outcome;
        }
    }
    return selection.LacksMatch() ? Failure(ExitCode::kLookupFailed, "Console \"%s\" not found.",
                                            std::string(name).c_str())
                                  : Outcome();
}
