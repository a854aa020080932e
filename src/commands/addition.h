// What additions of platforms and consoles have in common. All checks come before the first change.
#pragma once

#include <span>

#include "base/outcome.h"
#include "commands/command.h"
#include "model/inventory.h"

// A new platform or console.
struct Addition {
    // Its values: the initial ones with those of the command laid over them.
    Addition(const Command& command, const Inventory& inventory, Owner owner);

    const Command& command;
    const Inventory& inventory;
    Owner owner;
    PropertyValues values;
    RVT_Node* parent = nullptr;
};

// A check of the values of one kind, each by itself, or of the addition as a whole.
struct AdditionCheck {
    ValueKind form = ValueKind::kText;
    Outcome (*whole)(Addition& addition) = nullptr;
};

// The first failure of the checks, in their order.
Outcome Check(Addition& addition, std::span<const AdditionCheck> checks);

// CheckNameIsFree of the new name.
Outcome NameIsFree(Addition& addition);
