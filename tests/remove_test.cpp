// Removing platforms, consoles and caches.
#include "sample_map.h"

namespace {

// clang-format off
TEST(Remove, TakesOneElementWithAllInside) {
    const auto lab = [](const std::string& inside) { return PlatformText("ID=1;Name=lab", inside); };
    const std::string db = ConsoleText(8, "ID=1:2003;Name=Db"), web = ConsoleText(8, "ID=1:2004;Name=web"), nameless_web = ConsoleText(8, "ID=1:2005;Name=~");
    const std::string cache = "        <Cache a=\"1\">\n            <x/>\n        </Cache>\n";
    const std::string other = PlatformText("ID=2;Name=other"), nameless = PlatformText("ID=2;Name=~");
    const std::string free = ConsoleText(4, "ID=5:2005;Name=free"), nameless_free = ConsoleText(4, "ID=5:2005;Name=~");
    const std::string no_name = "Cannot find Property \"name=Name\" in \"PropertyMap\".";
    for (const MapRun& run : std::initializer_list<MapRun>{
        {lab(db + cache) + free + other, "platform -name lab", 0, free + other},
        {lab(db), "platform -name LAB", 1, "Platform \"LAB\" not found."},
        {lab("") + PlatformText("ID=2"), "platform", 0, lab("")}, {lab(db + web) + free, "system -name Db", 0, lab(web) + free},
        {lab(db) + free, "system -name free", 0, lab(db)}, {lab(db), "system -name db", 1, "Console \"db\" not found."},
        {lab(db + web + db), "system -name Db", 0, lab(web + db)}, {nameless_free + lab(db), "system -name Db", 1, no_name},
        {lab(nameless_web + db) + free, "system -name free", 0, lab(nameless_web + db)},
        {lab(db + cache) + other, "cache -platform lab", 0, lab(db) + other},
        {lab(db) + other, "cache -platform lab", 1, "Cannot find Cache for platform \"lab\"."},
        {nameless + lab(cache), "cache -platform lab", 1, no_name}, {lab(cache) + other, "cache -platform LAB", 1, ""}}) {
        Check({run.before, "-remove " + run.command, run.code, run.result});
    }
}
// clang-format on

}  // namespace
