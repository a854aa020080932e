#include "commands/actions.h"

#include <algorithm>
#include <array>

#include "commands/cache.h"
#include "commands/console.h"
#include "commands/platform.h"
#include "commands/security.h"

static constexpr Follow kNothing;
static constexpr Follow kInventory = {true, true, true, true};
static constexpr Follow kCache = {.map = true, .web = true};
static constexpr Follow kMap = {.map = true};
static constexpr Follow kKfxConf = {.kfxconf = true};
static constexpr Follow kDaemon = {.daemon = true};

// clang-format off
static constexpr auto kActions = std::to_array<ActionRow>({
    {Action::kAddPlatform,    "-add",      "platform", Rest::kNewElement, kInventory, "-name",     Owner::kPlatform, AddPlatform},
    {Action::kUpdatePlatform, "-update",   "platform", Rest::kChanges,    kInventory, "-name",     Owner::kPlatform, UpdatePlatform},
    {Action::kRemovePlatform, "-remove",   "platform", Rest::kOptions,    kInventory, "-name",     Owner::kPlatform, RemovePlatform},
    {Action::kAddSystem,      "-add",      "system",   Rest::kNewElement, kInventory, "-name",     Owner::kConsole,  AddConsole},
    {Action::kUpdateSystem,   "-update",   "system",   Rest::kChanges,    kInventory, "-name",     Owner::kConsole,  UpdateConsole},
    {Action::kRemoveSystem,   "-remove",   "system",   Rest::kOptions,    kInventory, "-name",     Owner::kConsole,  RemoveConsole},
    {Action::kUpdateCache,    "-update",   "cache",    Rest::kOptions,    kCache,     "-platform"},
    {Action::kRemoveCache,    "-remove",   "cache",    Rest::kOptions,    kCache,     "-platform", Owner::kPlatform, RemoveCache},
    {Action::kWriteKfxConf,   "-write",    "kfxconf",  Rest::kNothing,    kKfxConf},
    {Action::kViewKfxConf,    "-view",     "kfxconf",  Rest::kOptions,    kNothing,             "-name"},
    {Action::kSetSecurity,    "-security", "",         Rest::kSwitch,     kMap,        "",          Owner::kPlatform, SetSecurity},
    {Action::kViewSecurity,   "-view",     "security", Rest::kNothing,    kNothing},
    {Action::kConvertMap,     "-U",        "",         Rest::kMoreWords,  kKfxConf},
    {Action::kGetConfigValue, "-config",   "-get",     Rest::kVariable,   kNothing},
    {Action::kSetConfigValue, "-config",   "-set",     Rest::kVariable,   kDaemon},
    {Action::kShowHelp,       "-h",        "",         Rest::kAnything,   kNothing},
    {Action::kShowVersion,    "-V",        "",         Rest::kNothing,    kNothing},
});
// clang-format on

std::span<const ActionRow> ActionTable() {
    return kActions;
}

const ActionRow& RowOf(Action action) {
    return *std::ranges::find(kActions, action, &ActionRow::action);
}

bool OnlyLooks(Action action) {
    switch (action) {
        case Action::kViewKfxConf:
        case Action::kViewSecurity:
        case Action::kGetConfigValue:
        case Action::kShowHelp:
        case Action::kShowVersion:
            return true;
        default:
            return false;
    }
}

Outcome Execute(const Command& command, Inventory& inventory, const RVT_XML_Tree& cache_document,
                const std::function<Outcome(const RVT_Node&)>& fits) {
    const ActionRow& row = RowOf(command.action);
    inventory.BeginCommand();
    if (!row.follow.map) {
        return {};
    }
    Outcome outcome = row.change != nullptr ? row.change(command, inventory)
                                            : UpdateCache(command, inventory, cache_document, fits);
    inventory.EndCommand(outcome.ok());
    return outcome;
}
