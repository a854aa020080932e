#include "commands/cache.h"

#include "base/error.h"
#include "base/output.h"
#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/rvt_xml_parser.h"
#include "xml/rvt_xml_writer.h"
#include "xml/walk.h"

static ExitCode CacheNotFound() {
    return Fail(ExitCode::kIncompleteMap, "Cache not found in XML data.");
}

static ExitCode FindCacheElement(const RVT_XML_Tree& document, RVT_Node*& cache) {
    RVT_Node_List_Elem* pos = nullptr;
    const RVT_Node* declaration = document.GetFirstChild(pos);
    if (declaration == nullptr) {
        return CacheNotFound();
    }
    if (!declaration->IsType(RVT_XML_DECL)) {
        return Fail(ExitCode::kIncompleteMap, "First line must contain a <?xml ...> declaration.");
    }
    cache = RVT_XML_Tree::GetNextChild(pos);
    const bool found = cache != nullptr && cache->IsType(RVT_ELEMENT) && cache->IsName(Cache);
    return found ? ExitCode::kOk : CacheNotFound();
}

// Reads the cache back as it would stand in the map, which ends the run where that is impossible: a
// local name twice in one element, names and characters that XML 1.0 forbids, too deep a
// nesting.
static ExitCode CheckIsReadable(const RVT_Node& cache) {
    static constexpr size_t kDepthInMap = 8;
    std::string text;
    Output out(text);
    out.Put("<SystemMap><Platform>\n");
    XmlPrinter(out, false).PrintNodes(cache, kDepthInMap);
    out.Put("</Platform></SystemMap>\n");
    const bool is_readable = out.Flush() && CheckXMLText(text, "new cache") == 0;
    return is_readable ? ExitCode::kOk : ExitCode::kNotWellFormed;
}

ExitCode UpdateCache(const std::string& platform_name, RVT_XML_Tree* cache_document) {
    RVT_Node* cache = nullptr;
    if (const ExitCode code = FindCacheElement(*cache_document, cache); code != ExitCode::kOk) {
        return code;
    }
    RVT_Node* platform = FindPlatform(NameProp, platform_name);
    if (platform == nullptr) {
        return ExitCode::kLookupFailed;
    }
    if (const ExitCode code = CheckIsReadable(*cache); code != ExitCode::kOk) {
        return code;
    }
    if (RVT_Node* old = FindCache(*platform); old != nullptr) {
        old->Delete();
    }
    platform->AddChild(cache);
    return ExitCode::kOk;
}

ExitCode RemoveCache(const std::string& platform_name) {
    const RVT_Node* map = FindSystemMap();
    if (map == nullptr) {
        return ExitCode::kLookupFailed;
    }
    bool platform_exists = false;
    for (const RVT_Node& platform : LiveElements(*map, Platform)) {
        std::string_view name;
        if (GetPropertyValue(platform, NameProp, name) != ExitCode::kOk) {
            return ExitCode::kLookupFailed;
        }
        if (name != platform_name) {
            continue;
        }
        platform_exists = true;
        if (RVT_Node* cache = FindCache(platform); cache != nullptr) {
            cache->Delete();
            return ExitCode::kOk;
        }
    }
    if (!platform_exists) {
        ClearError();
    }
    return ExitCode::kLookupFailed;
}
