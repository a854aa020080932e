#include "frontend/option_table.h"

#include <algorithm>
#include <array>

#include "model/vocabulary.h"

static constexpr unsigned kChangePlatform = kAddPlatform | kUpdatePlatform;
static constexpr unsigned kChangeSystem = kAddSystem | kUpdateSystem;
static constexpr unsigned kChangeEither = kChangePlatform | kChangeSystem;

static constexpr auto kText = OptionKind::kText;
static constexpr auto kNonEmptyText = OptionKind::kNonEmptyText;
static constexpr auto kMapText = OptionKind::kMapText;
static constexpr auto kSwitch = OptionKind::kSwitch;

// clang-format off
static constexpr std::array kTable = {
    Option{"-name",          kText,         &Options::platform_name, "",             kChangePlatform | kRemovePlatform, kChangePlatform, ""},
    Option{"-name",          kText,         &Options::system_name,   "",             kChangeSystem | kRemoveSystem | kViewKfxConf, kChangeSystem, ""},
    Option{"-newname",       kNonEmptyText, &Options::new_name,      NameProp,       kUpdatePlatform | kUpdateSystem, 0, ""},
    Option{"-model",         kText,         &Options::model,         ModelProp,      kChangePlatform, kAddPlatform, ""},
    Option{"-type",          kText,         &Options::type,          TypeProp,       kChangeSystem, 0, ""},
    Option{"-platform",      kText,         &Options::platform_name, "",             kAddSystem | kUpdateCache | kRemoveCache, 0, "-addr"},
    Option{"-addr",          kText,         &Options::address,       AddrProp,       kChangeEither, kAddPlatform, "-platform"},
    Option{"-port",          kText,         &Options::port,          PortProp,       kChangeEither, kAddPlatform | kAddSystem, ""},
    Option{"-mport",         kText,         &Options::mapped_port,   MappedPortProp, kChangeEither, 0, ""},
    Option{"-comment",       kMapText,      &Options::comment,       DescProp,       kChangeEither, 0, ""},
    Option{"-template",      kMapText,      &Options::template_name, TemplateProp,   kChangePlatform, 0, ""},
    Option{"-evfile",        kText,         &Options::event_file,    EventFileProp,  kChangeEither, 0, ""},
    Option{"-auth",          kSwitch,       &Options::auth,          AuthProp,       kChangeEither, 0, ""},
    Option{"-logging",       kSwitch,       &Options::logging,       LoggingProp,    kChangeEither, 0, ""},
    Option{"-events",        kSwitch,       &Options::events,        EventsProp,     kChangeEither, 0, ""},
    Option{"-enable",        kSwitch,       &Options::enable,        EnableProp,     kChangeEither, 0, ""},
    Option{"-first_ts_port", kText,         &Options::first_ts_port, FTSPProp,       kChangePlatform, 0, ""},
    Option{"-last_ts_port",  kText,         &Options::last_ts_port,  LTSPProp,       kChangePlatform, 0, ""},
};
// clang-format on

std::span<const Option> OptionTable() {
    return kTable;
}

const Option* FindOption(std::string_view word, Action for_action) {
    const auto row = std::find_if(kTable.begin(), kTable.end(), [&](const Option& option) {
        return option.word == word && (option.accepted_by & for_action) != 0;
    });
    return row == kTable.end() ? nullptr : &*row;
}
