// The inventory of one map: its document, and the answers and changes that commands ask for.
#pragma once

#include <string_view>

#include "base/outcome.h"
#include "model/properties.h"
#include "xml/rvt_node.h"

// A platform or console and where it was found.
struct Place {
    RVT_Node* element = nullptr;
    RVT_Node* platform = nullptr;  // that a console is inside of; null for the others
};

class Inventory {
  public:
    // The document, to be filled once before anything is asked, and to be written.
    RVT_XML_Tree& Tree() { return tree_; }

    // The root element, or null; and the outcome for who needs it, with "code":
    // "Cannot find SystemMap element."
    [[nodiscard]] RVT_Node* FindSystemMap() const;
    Result<RVT_Node*> NeedSystemMap(ExitCode code) const;

    // The platform called "name". kLookupFailed "Cannot find Platform \"%s\"." or without a root.
    Result<RVT_Node*> FindPlatform(std::string_view name) const;

    // The console called "name", inside a platform or standalone. A console without a name hides
    // those behind it in its platform. kLookupFailed "Console \"%s\" not found.", without a root,
    // or as PropertyMissing for a standalone console without a name, which ends the search.
    Result<Place> FindConsole(std::string_view name) const;

    // How many platforms and consoles have a name, letter case ignored; 21 without a root, which
    // reads as taken.
    int GetCountOfConsolesWithName(std::string_view name) const;
    bool IsDuplicateName(std::string_view name) const;

    // Whether a platform or standalone console other than "node" (null for none) has "address".
    bool IsDuplicateAddress(const RVT_Node* node, std::string_view address) const;

    // How many use "port" at "address". 0 without a root.
    int GetCountOfConsolesWithAddress(std::string_view address, std::string_view port) const;
    bool IsDuplicatePortWithinAddress(std::string_view address, std::string_view port) const;

    // Appends to "parent" a platform or console with the identifier "id" and a property map with
    // those of "values" that it can have, in the order of PropertiesOf. Returns it.
    static RVT_Node& Add(RVT_Node& parent, Owner owner, std::string_view id,
                         const PropertyValues& values);

  private:
    RVT_XML_Tree tree_;
};
