// What a command of tqs reads: a map, or an inventory in CSV or JSON.
#pragma once

#include <optional>
#include <string>

#include "base/files.h"
#include "base/outcome.h"
#include "inventory/inventory_file.h"
#include "model/inventory.h"

// The path that a command line names in messages, where "-" is standard input.
std::string NameOf(const std::string& path);

// Opens what a command line names, for reading. The writer of a FIFO is waited for, as by a shell.
FileDescriptor OpenNamed(const std::string& path);

// A map, or an inventory in CSV or JSON, that was read.
struct Source {
    std::string path;                   // "-" for standard input
    std::string text;                   // empty where the file can be read again
    std::optional<InventoryFile> said;  // none: a map
    Inventory inventory;                // of a map
    Outline outline;                    // its elements, or those that "said" asks for

    [[nodiscard]] std::string Name() const;
};

// Reads a map, or what a file in CSV or JSON says; that one has no elements yet. kNotWellFormed
// for what cannot be read, kIncompleteMap for a map without a root, or as ReadInventoryFile; the
// cause has the position.
Result<Source> ReadSource(const std::string& path);

// Gives a file in CSV or JSON its elements, with what it does not say from "present". Fails as
// Completed.
Outcome Complete(Source& source, const Outline& present);

// A map, or a file in CSV or JSON by itself.
Result<Source> ReadMap(const std::string& path);
