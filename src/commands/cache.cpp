#include "commands/cache.h"

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
// nesting.
static Outcome CheckIsReadable(const RVT_Node& cache) {
    static constexpr size_t kDepthInMap = 8;
    std::string text;
    Output out(text);
    out.Put("<SystemMap><Platform>\n");
    XmlPrinter printer(out, false);
    printer.PrintNodes(cache, kDepthInMap);
    out.Put("</Platform></SystemMap>\n");
    static_cast<void>(out.Flush());
    return printer.outcome().ok() ? CheckXMLText(text, "new cache") : printer.outcome();
}

Outcome UpdateCache(const Command& command, Inventory& inventory,
                    const RVT_XML_Tree& cache_document) {
    const Result<RVT_Node*> cache = FindCacheElement(cache_document);
    if (!cache.ok()) {
        return cache.outcome();
    }
    const Result<RVT_Node*> platform = inventory.FindPlatform(command.name);
    if (!platform.ok()) {
        return platform.outcome();
    }
    if (Outcome outcome = CheckIsReadable(**cache); !outcome.ok()) {
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
