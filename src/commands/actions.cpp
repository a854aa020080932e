#include "commands/actions.h"

#include <algorithm>
#include <array>

#include "commands/cache.h"
#include "commands/console.h"
#include "commands/platform.h"
#include "commands/security.h"

// The web front end, the console daemon, and a third component that goes with the daemon.
enum : unsigned { kWeb = 1, kKfxd = 2, kLrp = 4 };

static constexpr Follow kNothing;
static constexpr Follow kInventory = {true, true, kWeb | kKfxd | kLrp};
static constexpr Follow kCache = {.map = true, .notify = kWeb};
static constexpr Follow kMap = {.map = true};
static constexpr Follow kKfxConf = {.kfxconf = true};
static constexpr Follow kDaemon = {.notify = kKfxd | kLrp};

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

std::span<const NotificationRow> NotificationTable() {
    static const auto kNotifications = std::to_array<NotificationRow>({
        {"web", paths::kNotifyWeb, true},
        {"kfxd", paths::kNotifyKfxd, false},
        {"", paths::kNotifyLrp, false},
    });
    return kNotifications;
}

bool Silence(std::string_view word, Notifications& silenced) {
    const auto rows = NotificationTable();
    const auto row = std::ranges::find(rows, word, &NotificationRow::word);
    const bool is_known = row != rows.end() && !word.empty();
    if (is_known) {
        silenced.set(static_cast<size_t>(row - rows.begin()));
    }
    return is_known;
}

bool OnlyLooks(Action action) {
    const Follow& follow = RowOf(action).follow;
    return !follow.map && !follow.kfxconf && follow.notify.none();
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
