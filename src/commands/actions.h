// The table of actions: how each is asked for, and what it does and is followed by. From it work
// the parser of the command line and the run.
#pragma once

#include <functional>
#include <span>
#include <string_view>

#include "base/outcome.h"
#include "commands/command.h"
#include "model/inventory.h"

// What stands behind the words of an action.
enum class Rest {
    kNothing,
    kAnything,    // nobody looks at it
    kMoreWords,   // others of the words that may stand before an action, or another action
    kSwitch,      // true or false
    kVariable,    // a file before the second word, a variable behind it
    kOptions,     // "target" alone
    kNewElement,  // options: "target", and the properties of a new element
    kChanges,     // options: "target", -newname, and properties to change
};

// What follows an action that succeeded.
struct Follow {
    bool map = false;      // the map is written back
    bool kfxconf = false;  // kfx.conf is regenerated
    Notifications notify = {};
};

struct ActionRow {
    Action action;
    std::string_view word;
    std::string_view object;  // the second word; empty for none
    Rest rest;
    Follow follow;
    std::string_view target = {};  // the option that names what the action is about
    Owner owner = Owner::kPlatform;
    Outcome (*change)(const Command& command, Inventory& inventory) = nullptr;
};

std::span<const ActionRow> ActionTable();

// A component that is notified of changes.
struct NotificationRow {
    std::string_view word;  // that silences it on a command line; empty where none does
    const char* command;    // for a shell
    bool is_recorded;       // a failure is recorded in the log; those of the others are ignored
};

// In the order of the bits of Notifications.
std::span<const NotificationRow> NotificationTable();

// Adds the notification that "word" silences to "silenced". False for an unknown word.
bool Silence(std::string_view word, Notifications& silenced);

// Of any action but kNoAction.
const ActionRow& RowOf(Action action);

// Whether an action is answered with a text: one that nothing follows.
bool OnlyLooks(Action action);

// Makes the change that a command asks for, as told beside the command's function; fine for a
// command that changes no inventory. "cache_document" is what UpdateCache takes the cache from,
// and "fits" its last check.
Outcome Execute(const Command& command, Inventory& inventory,
                const RVT_XML_Tree& cache_document = {},
                const std::function<Outcome(const RVT_Node& cache)>& fits = {});
