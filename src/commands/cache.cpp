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
    RVT_Node_List_Elem* pos = nullptr;
    const RVT_Node* declaration = document.GetFirstChild(pos);
    if (declaration == nullptr) {
        return CacheNotFound();
    }
    if (!declaration->IsType(RVT_XML_DECL)) {
        return Outcome(ExitCode::kIncompleteMap,
                       "First line must contain a <?xml ...> declaration.");
    }
    RVT_Node* cache = RVT_XML_Tree::GetNextChild(pos);
    if (cache == nullptr || !cache->IsType(RVT_ELEMENT) || !cache->IsName(Cache)) {
        return CacheNotFound();
    }
    return cache;
}

// Reads the cache back as it would stand in the map, which ends the run where that is impossible: a
// local name twice in one element, names and characters that XML 1.0 forbids, too deep a
// nesting.
static Outcome CheckIsReadable(const RVT_Node& cache) {
    static constexpr size_t kDepthInMap = 8;
    std::string text;
    Output out(text);
    out.Put("<SystemMap><Platform>\n");
    static_cast<void>(PrintNodes(out, cache, kDepthInMap));
    out.Put("</Platform></SystemMap>\n");
    const bool readable = out.Flush() && CheckXMLText(text, "new cache") == 0;
    return readable ? Outcome() : Outcome(ExitCode::kNotWellFormed, "");
}

Outcome UpdateCache(std::string_view platform_name, const RVT_XML_Tree& cache_document) {
    const Result<RVT_Node*> cache = FindCacheElement(cache_document);
    if (!cache.ok()) {
        return cache.outcome();
    }
    RVT_Node* platform = FindPlatform(platform_name);
    if (platform == nullptr) {
        return PlatformMissing(platform_name);
    }
    if (Outcome outcome = CheckIsReadable(**cache); !outcome.ok()) {
        return outcome;
    }
    if (RVT_Node* old = FindCache(*platform); old != nullptr) {
        old->Delete();
    }
    platform->AddChild(*cache);
    return {};
}

Outcome RemoveCache(std::string_view platform_name) {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return SystemMapMissing(ExitCode::kLookupFailed);
    }
    bool platform_exists = false;
    for (const RVT_Node& platform : LiveElements(*map, Platform)) {
        const auto name = GetPropertyValue(platform, NameProp);
        if (!name) {
            return PropertyMissing(platform, NameProp);
        }
        if (name != platform_name) {
            continue;
        }
        platform_exists = true;
        if (RVT_Node* cache = FindCache(platform); cache != nullptr) {
            cache->Delete();
            return {};
        }
    }
    if (!platform_exists) {
        return {ExitCode::kLookupFailed, ""};
    }
    return Failure(ExitCode::kLookupFailed, "Cannot find Cache for platform \"%s\".",
                   std::string(platform_name).c_str());
}
