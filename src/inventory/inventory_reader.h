// The two forms of an inventory file; ReadInventoryFile chooses.
#pragma once

#include "inventory/inventory_file.h"
#include "inventory/keys.h"

// Both add what "text" says to "file"; values are parts of "text" or kept for the whole run.
Outcome ReadCsv(std::string_view text, InventoryFile& file);
Outcome ReadJson(std::string_view text, InventoryFile& file);

// Gives the row the value of a key.
Outcome Take(const InventoryFile& file, Row& row, const Key& key, std::string_view value);

// kInvalidArgument at "place" for a word that is no key.
Outcome UnknownKeyAt(std::string place, std::string_view word);

// The line in which the byte at "offset" stands, from 1.
size_t LineAt(std::string_view text, size_t offset);
