// The inventory of one map: its document, and the answers and changes that commands ask for.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "base/outcome.h"
#include "model/index.h"
#include "model/lookups.h"
#include "model/properties.h"
#include "model/validation.h"
#include "xml/rvt_node.h"

// Commands run one after another between BeginCommand and EndCommand, each as if it were alone on
// the map that the one before has left. From the second one on, lookups use tables instead of
// walks, where the map is regular enough; they find the same.
class Inventory {
  public:
    // The document, to be filled once before the first command, and to be written between two.
    RVT_XML_Tree& Tree();
    // To be copied; it may hold traces of what commands have removed.
    [[nodiscard]] const RVT_XML_Tree& Tree() const { return tree_; }

    // The reference files as its commands see them.
    ReferenceFiles& Files() { return files_; }

    void BeginCommand();
    // Takes back the values that a command which was not "accepted" has stored. One that was
    // accepted has changed the document.
    void EndCommand(bool accepted);

    // Makes of the values that the last command gave, which was accepted, what they are when they
    // have been written and read; the first time, of all values of the map.
    void Settle();

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

    // The first platform called "name" that has a cache. kLookupFailed "Cannot find Cache for
    // platform \"%s\".", without a message when there is no such platform, without a root, or as
    // PropertyMissing for a platform without a name before it, which ends the search.
    Result<RVT_Node*> FindPlatformWithCache(std::string_view name) const;

    // How many platforms and consoles have a name, letter case ignored; 21 without a root, which
    // reads as taken.
    int GetCountOfConsolesWithName(std::string_view name) const;
    bool IsDuplicateName(std::string_view name) const;

    // Whether a platform or standalone console other than "node" (null for none) has "address".
    bool IsDuplicateAddress(const RVT_Node* node, std::string_view address) const;

    // How many use "port" at "address". 0 without a root.
    int GetCountOfConsolesWithAddress(std::string_view address, std::string_view port) const;
    bool IsDuplicatePortWithinAddress(std::string_view address, std::string_view port) const;

    // Appends a platform or console to "platform" or, for null, to the root. It has the identifier
    // "id" and a property map with those of "values" that it can have, in the order of
    // PropertiesOf.
    void Add(RVT_Node* platform, Owner owner, std::string_view id, const PropertyValues& values);

    // Gives a property, whose "value" attribute is "attribute", another text.
    void SetValue(const Place& place, Property property, RVT_Node& attribute,
                  std::string_view value);

    // Appends a cache to "platform".
    void AddCache(RVT_Node& platform, RVT_Node& cache);

    // Removes a platform, console or cache that stands in "platform" or, for null, in the root. The
    // command must be accepted then.
    void Remove(RVT_Node& node, RVT_Node* platform);

  private:
    struct StoredValue {
        Place place;
        Property property;
        RVT_Node* attribute;
        const char* before;
    };

    [[nodiscard]] const RVT_Node& Map() const;
    [[nodiscard]] Outcome NotFound(Outcome failure) const;
    void Store(const StoredValue& stored, const char* value);
    void DropTraces();

    RVT_XML_Tree tree_;
    ReferenceFiles files_;
    int commands_ = 0;
    Index* index_ = nullptr;
    // Of the present command.
    std::vector<StoredValue> stored_;
    RVT_Node* changed_ = nullptr;  // the platform, console or cache that it gave values to
    bool is_settled_ = false;      // all values have been made what is read
    // What has been removed, in order. The document as written has a trace of what the last
    // accepted command removed, but none of what others did.
    std::vector<Place> removed_;
    size_t removed_before_ = 0;  // by earlier commands than the present one
    size_t traces_ = 0;          // so many of them are to leave no trace,
    size_t next_drop_ = 16;      // and so many are worth a walk
};

// The inventory of a new map, without platforms and consoles.
Inventory NewInventory();
