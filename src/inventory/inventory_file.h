// An inventory as people keep it: a text in CSV or JSON as "tqs list" writes it, or as a person or
// a spreadsheet would. It need not say everything: columns and members may be missing, and of
// caches, identifiers and, in CSV, the security switch it cannot tell.
//
//     Result<InventoryFile> file = ReadInventoryFile(text, "lab.csv");
//     Result<Outline> now = Completed(*file, present, false);  // see inventory/completion.h
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/outcome.h"
#include "model/element.h"

// What is said of one platform or console.
struct Row {
    size_t number = 0;  // in CSV the line it begins in; in JSON which item it is, from 1
    std::optional<Owner> owner = std::nullopt;  // none: not said, until it has been found out
    std::string_view platform = {};             // null where it is not said
    PropertyValues values = {};                 // those that are said
    const Element* element = nullptr;           // of a map: says all there is
};

struct InventoryFile {
    std::string name;  // in messages
    bool is_csv;
    std::vector<Row> rows;
    std::optional<std::string_view> security;
    RVT_Node* map = nullptr;  // the root where it is a map
};

// Whether a text is, by how it begins, a map and no inventory in CSV or JSON: "<" comes first
// behind a byte-order mark and blanks, in whatever encoding, or nothing does.
bool IsMap(std::string_view beginning);

// What is said in "text", which need not outlive it. Failures have a cause with their place. They
// are kNotWellFormed for what is no text in CSV, JSON or UTF-8; kInvalidArgument for a key that is
// unknown, missing or doubled, a value of a wrong type or with a character that no map holds, and a
// row that has not as many fields as the first.
Result<InventoryFile> ReadInventoryFile(std::string_view text, const std::string& name);

// Where a row stands: "lab.csv:12" or, in JSON, its name in place of the line, "lab.json:db1"; and
// the same without the file's name.
std::string PositionOf(const InventoryFile& file, const Row& row);
std::string PositionIn(const InventoryFile& file, const Row& row);
// The rows of a file that has been completed, by whom messages and the steps of a script are for
// (Label); of equal ones the first.
std::unordered_map<std::string, const Row*> RowsBySubject(const InventoryFile& file);

// A fault in what a file says, at "place". kInvalidArgument unless another code is given.
Outcome WrongAt(std::string place, const std::string& text,
                ExitCode code = ExitCode::kInvalidArgument);
