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
// the file that the one before has left: on what writing and reading it makes of values. From the
// second one on, lookups use tables instead of walks, where the map is regular enough; they find
// the same.
class Inventory {
  public:
    // The document, to be filled once before the first command, and to be written between two.
    RVT_XML_Tree& Tree();
    // To be copied; it may hold traces of what commands have removed.
    [[nodiscard]] const RVT_XML_Tree& Tree() const { return tree_; }

    // The reference files as its commands see them.
    ReferenceFiles& Files() { return files_; }

    // What earlier commands have removed is gone from now on, and what they have given is as it
    // would be read.
    void BeginCommand();
    // Takes back the values that a command which was not "accepted" has stored, and what it did to
    // a cache. One that was accepted has changed the document.
    void EndCommand(bool accepted);

    // The present command makes kfx.conf of the document as it is now.
    void MarkKfxConf();

    // Values as the last command that was accepted has left them, or as they were at the mark,
    // instead of as the next command reads them: for who writes the document or kfx.conf when all
    // commands have ended.
    void ShowAsAccepted() { Show(accepted_from_); }
    void ShowAsMarked() { Show(marked_from_); }

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

    // Removes a platform, console or cache that stands in "platform" or, for null, in the root. It
    // still counts where the rules say so until the command has ended.
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
    void Forget(const Place& removed);
    void DropSettled();
    void Store(const StoredValue& stored, const char* value);
    void Touch(RVT_Node& node);
    [[nodiscard]] bool IsIndexSafe() const;
    void Settle();
    void SettleBelow(RVT_Node& node, bool is_platform);
    void Show(size_t from);

    RVT_XML_Tree tree_;
    ReferenceFiles files_;
    int commands_ = 0;
    std::optional<Index> index_;
    std::vector<StoredValue> stored_;  // of the present command
    // A value that reading makes another one of: that which the document does not hold at present.
    struct Raw {
        RVT_Node* attribute;
        const char* value;
    };
    std::vector<Raw> raws_;           // in the order in which they became what is read
    size_t accepted_from_ = 0;        // the first since the last accepted command,
    size_t marked_from_ = 0;          // and since the mark
    size_t shown_from_ = 0;           // from here on the document holds what was given
    std::vector<RVT_Node*> touched_;  // by the present command
    RVT_Node* new_cache_ = nullptr;   // of the present command
    RVT_Node* new_cache_platform_ = nullptr;
    bool is_to_settle_ = false;  // a command was accepted since all values were as read,
    bool is_settled_ = false;    // and they have been so once
    // In their order: what an accepted command has been done without, so that the document as
    // written has no trace of it; what lookups find no longer; what the present command has
    // removed.
    std::vector<Place> removed_;
    size_t settled_ = 0;
    size_t forgotten_ = 0;
};
