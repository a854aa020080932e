// Commands that run one after another on one inventory, with the results of runs of their own: each
// finds the inventory as if the one before had written the map and it had been read again.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "base/outcome.h"
#include "commands/actions.h"
#include "commands/command.h"
#include "model/inventory.h"
#include "xml/rvt_xml_parser.h"

class Sequence {
  public:
    // On the "inventory" of a map that was read from the path "map". Both must outlive it.
    Sequence(Inventory& inventory, std::string map) : inventory_(inventory), map_(std::move(map)) {}

    // Makes the change that a command asks for; "document" is what -update cache reads, "name" what
    // messages call it. Fails as the run of the command would, but for what happens to files: as
    // Execute, as the reader, with kWriteFailed where the map could not be written in its encoding,
    // and with kIncompleteMap, when the change is made, where there is no kfx.conf of it.
    Outcome Do(const Command& command, std::string_view document, const std::string& name);

    // What all of them have changed, or asked for: "map" and "kfxconf".
    [[nodiscard]] const Follow& Changes() const { return changes_; }
    // Whether the last one asked for kfx.conf, and was not refused before.
    [[nodiscard]] bool MakesKfxConf() const { return makes_kfxconf_; }

  private:
    Outcome Change(const Command& command, std::string_view document, const std::string& name);
    [[nodiscard]] Outcome FitsCache(const RVT_Node& cache) const;
    Outcome HasKfxConf();

    const XMLLibrary library_;
    Inventory& inventory_;
    std::string map_;
    Follow changes_;
    bool makes_kfxconf_ = false;
    bool is_complete_ = false;
    RVT_Node* incomplete_ = nullptr;  // the first of those that are not
};
