#include "daemonconf/kfxconf.h"

#include <array>

#include "base/paths.h"
#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

// What a standalone console has in the place of a platform's port and model.
static constexpr std::string_view kStandalonePort = "23";
static constexpr std::string_view kStandaloneModel = "<other>";
static constexpr std::string_view kEmptyField = "\"\"";

static std::string_view AsDigit(std::string_view value) {
    return value == switch_on ? "1" : "0";
}

Outcome GetKfxConfPlatformData(const RVT_Node& platform, KfxConfLine& line) {
    static constexpr std::array kNames = {
        NameProp,      AddrProp, PortProp,       ModelProp, LoggingProp,  EventsProp, EnableProp,
        EventFileProp, DescProp, MappedPortProp, AuthProp,  TemplateProp, FTSPProp,   LTSPProp};
    std::array<std::string_view, kNames.size()> v;
    Outcome outcome = GetPropertyValues(platform, kNames, v);
    if (outcome.ok()) {
        line = {v[0],           v[1],          v[2],          v[2],  v[3], v[0],
                AsDigit(v[4]),  AsDigit(v[5]), AsDigit(v[6]), v[7],  v[8], v[9],
                AsDigit(v[10]), unknown_value, v[11],         v[12], v[13]};
    }
    return outcome;
}

Outcome GetKfxConfGenericConsoleData(const RVT_Node& console, KfxConfLine& line) {
    static constexpr std::array kNames = {NameProp,       AddrProp,   PortProp,      LoggingProp,
                                          EventsProp,     EnableProp, EventFileProp, DescProp,
                                          MappedPortProp, AuthProp,   TypeProp};
    std::array<std::string_view, kNames.size()> v;
    Outcome outcome = GetPropertyValues(console, kNames, v);
    if (outcome.ok()) {
        line = {v[0],
                v[1],
                v[2],
                kStandalonePort,
                kStandaloneModel,
                v[1],
                AsDigit(v[3]),
                AsDigit(v[4]),
                AsDigit(v[5]),
                v[6],
                v[7],
                v[8],
                AsDigit(v[9]),
                v[10],
                "",
                "",
                ""};
    }
    return outcome;
}

Outcome GetKfxConfConsoleData(const RVT_Node& console, KfxConfLine& line) {
    static constexpr std::array kNames = {NameProp,   PortProp,      LoggingProp, EventsProp,
                                          EnableProp, EventFileProp, DescProp,    MappedPortProp,
                                          AuthProp,   TypeProp};
    std::array<std::string_view, kNames.size()> v;
    Outcome outcome = GetPropertyValues(console, kNames, v);
    if (outcome.ok()) {
        line.name = v[0];
        line.console_port = v[1];
        line.logging = AsDigit(v[2]);
        line.events = AsDigit(v[3]);
        line.enable = AsDigit(v[4]);
        line.event_file = v[5];
        line.description = v[6];
        line.mapped_port = v[7];
        line.auth = AsDigit(v[8]);
        line.type = v[9];
    }
    return outcome;
}

Outcome WriteFields(Output& out, const KfxConfLine& line) {
    const auto or_quotes = [](std::string_view value) {
        return value.empty() ? kEmptyField : value;
    };
    const std::string_view description = line.description.empty() ? "none" : line.description;
    const std::array<std::string_view, 34> pieces = {line.name,
                                                     " ",
                                                     line.address,
                                                     " ",
                                                     line.console_port,
                                                     " ",
                                                     line.platform_port,
                                                     " ",
                                                     line.mapped_port,
                                                     " ",
                                                     line.model,
                                                     " ",
                                                     line.platform_name,
                                                     " \"",
                                                     line.type,
                                                     "\" ",
                                                     line.logging,
                                                     " ",
                                                     line.events,
                                                     " ",
                                                     line.enable,
                                                     " ",
                                                     line.auth,
                                                     " ",
                                                     or_quotes(line.event_file),
                                                     " \"",
                                                     description,
                                                     "\" ",
                                                     or_quotes(line.template_name),
                                                     " ",
                                                     or_quotes(line.first_ts_port),
                                                     " ",
                                                     or_quotes(line.last_ts_port),
                                                     "\n"};
    for (const std::string_view piece : pieces) {
        out.Put(piece);
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
        if (!name_.empty() && line.name != name_) {
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
    KfxConfLine line;
    const Outcome filled = element.IsName(Platform) ? GetKfxConfPlatformData(element, line)
                                                    : GetKfxConfGenericConsoleData(element, line);
    if (!filled.ok()) {
        return {ExitCode::kIncompleteMap, filled.message()};
    }
    if (Outcome outcome = selection.Put(line); !outcome.ok()) {
        return outcome;
    }
    for (const RVT_Node& console : LiveElements(element, Console)) {
        KfxConfLine console_line = line;
        if (!GetKfxConfConsoleData(console, console_line).ok()) {
            continue;
        }
        if (Outcome outcome = selection.Put(console_line); !outcome.ok()) {
            return outcome;
        }
    }
    return {};
}

Outcome WriteKfxConf(Output& out, std::string_view name) {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return SystemMapMissing(ExitCode::kIncompleteMap);
    }
    Selection selection(out, name);
    for (const RVT_Node& element : LiveElements(*map, Platform, Console)) {
        if (Outcome outcome = PutElement(element, selection); !outcome.ok()) {
            return outcome;
        }
    }
    return selection.LacksMatch() ? Failure(ExitCode::kLookupFailed, "Console \"%s\" not found.",
                                            std::string(name).c_str())
                                  : Outcome();
}
