// Any bytes as a map: what can be read can be written, and comes back.
#include <cstdint>

#include "in_process.h"
#include "xml/rvt_xml_writer.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FreeBuffers();
    const std::string input(reinterpret_cast<const char*>(data), size);
    PutFile("map.xml", input);
    RVT_XML_Tree tree;
    if (!CanRead("map.xml", tree)) {
        return 0;
    }
    if (!WriteXMLFile("map.xml", tree, [] { return Outcome(); }).ok()) {
        // Only an encoding that the system, the text or the parser does not fit may stop a write.
        Require(Dump(tree).find("encoding=") != std::string::npos, "a map can be written");
        Require(GetFile("map.xml") == input, "a write that fails leaves the map");
        return 0;
    }
    RVT_XML_Tree read;
    Require(CanRead("map.xml", read), "what was written can be read");
    Require(Dump(read) == Dump(tree), "what was written comes back");
    return 0;
}
