#include "commands/cache.h"

#include <utility>

#include "base/output.h"
#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/rvt_xml_parser.h"
#include "xml/rvt_xml_writer.h"
#include "xml/walk.h"

static Outcome CacheNotFound() {
    return {ExitCode::kIncompleteMap, "Cache not found in XML data."};
}

static Result<RVT_Node*> FindCacheElement(const RVT_XML_Tree& document) {
    const NodeWalk nodes = Children(document);
    auto node = nodes.begin();
    if (node == nodes.end()) {
        return CacheNotFound();
    }
    if (!node->IsType(RVT_XML_DECL)) {
        return Outcome(ExitCode::kIncompleteMap,
                       "First line must contain a <?xml ...> declaration.");
    }
    ++node;
    if (node == nodes.end() || !node->IsType(RVT_ELEMENT) || !node->IsName(tag::Cache)) {
        return CacheNotFound();
    }
    return &*node;
}

// Reads the cache back as it would stand in the map, which fails where that is impossible: a
// local name twice in one element, names and characters that XML 1.0 forbids, too deep a
// nesting. The map's version of XML says which.
static Outcome CheckIsReadable(const RVT_Node& cache, bool is_xml_11) {
    static constexpr size_t kDepthInMap = 8;
    std::string text;
    Output out(text);
    out.Put(is_xml_11 ? "<?xml version=\"1.1\"?>" : "");
    out.Put("<SystemMap><Platform>\n");
    XmlPrinter printer(out, is_xml_11);
    printer.PrintNodes(cache, kDepthInMap);
    out.Put("</Platform></SystemMap>\n");
    static_cast<void>(out.Flush());
    return printer.outcome().ok() ? CheckXMLText(text, "new cache") : printer.outcome();
}

Outcome UpdateCache(const Command& command, Inventory& inventory,
                    const RVT_XML_Tree& cache_document,
                    const std::function<Outcome(const RVT_Node&)>& fits) {
    const Result<RVT_Node*> cache = FindCacheElement(cache_document);
    if (!cache.ok()) {
        return cache.outcome();
    }
    const Result<RVT_Node*> platform = inventory.FindPlatform(command.name);
    if (!platform.ok()) {
        return platform.outcome();
    }
    if (Outcome outcome = CheckIsReadable(**cache, IsXml11(std::as_const(inventory).Tree()));
        !outcome.ok()) {
        return outcome;
    }
    if (Outcome outcome = fits ? fits(**cache) : Outcome(); !outcome.ok()) {
        return outcome;
    }
    if (RVT_Node* old = FindCache(**platform); old != nullptr) {
        inventory.Remove(*old, *platform);
    }
    inventory.AddCache(**platform, **cache);
    return {};
}

Outcome RemoveCache(const Command& command, Inventory& inventory) {
    const Result<RVT_Node*> platform = inventory.FindPlatformWithCache(command.name);
    if (platform.ok()) {
        inventory.Remove(*FindCache(**platform), *platform);
    }
    return platform.outcome();
}
