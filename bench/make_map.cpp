// Prints a map of a given size, made with the program's own vocabulary and in its own layout:
//
//     make_map PLATFORMS CONSOLES [old]
//
// PLATFORMS platforms of CONSOLES consoles each. With "old", in the format of an earlier release: a
// third of the platforms share an address with others, a quarter share a name in another letter
// case, and what the conversion adds is missing.
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "base/output.h"
#include "commands/properties.h"
#include "model/identifiers.h"
#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/rvt_xml_writer.h"

static std::string Address(int number) {
    return "10." + std::to_string(number / 62500 % 250 + 1) + "." +
           std::to_string(number / 250 % 250) + "." + std::to_string(number % 250 + 1);
}

static void AddConsoles(RVT_Node& platform, int number, int count, bool old) {
    for (int i = 0; i < count; ++i) {
        const std::string name = "console-" + std::to_string(number) + "-" + std::to_string(i);
        const std::string port = std::to_string(2001 + i);
        std::vector<NewProperty> properties = {{AddrProp, Address(number)},
                                               {NameProp, name},
                                               {TypeProp, old ? "AIX" : "linux"},
                                               {PortProp, port},
                                               {DescProp, ""}};
        for (const std::string_view name_of : {LoggingProp, EventsProp, EnableProp}) {
            if (!old || name_of != EnableProp) {
                properties.push_back({name_of, switch_on, "boolean"});
            }
        }
        if (!old) {
            properties.insert(properties.end(),
                              {{EventFileProp, ""}, {MappedPortProp, "0"}, {AuthProp, switch_on}});
        }
        AddElementWithProperties(platform, Console, ConsoleID(std::to_string(number), port),
                                 properties);
    }
}

static RVT_Node& AddPlatformElement(RVT_Node& map, int number, bool old) {
    const bool shares_name = old && number % 4 == 0;
    const std::string name =
        (shares_name ? "LAB-" : "lab-") + std::to_string(shares_name ? number + 1 : number);
    const std::string address = Address(old && number % 3 == 0 ? number / 6 * 6 : number);
    std::vector<NewProperty> properties = {{NameProp, name},   {AddrProp, address},
                                           {PortProp, "7001"}, {ModelProp, "M100"},
                                           {DescProp, ""},     {TemplateProp, ""}};
    if (old) {
        properties.push_back({ConnProp, TerminalServer});
    } else {
        properties.insert(properties.end(), {{LoggingProp, switch_on},
                                             {EventsProp, switch_on},
                                             {EnableProp, switch_on},
                                             {EventFileProp, ""},
                                             {MappedPortProp, "0"},
                                             {AuthProp, switch_on},
                                             {FTSPProp, "2001"},
                                             {LTSPProp, "2008"}});
    }
    return AddElementWithProperties(map, Platform, std::to_string(number), properties);
}

int main(int argc, char** argv) {
    if (argc < 3) {
        return 2;
    }
    const int platforms = atoi(argv[1]);
    const bool old = argc > 3;
    RVT_Node* declaration = RVT_Node::Create(RVT_XML_DECL);
    SetAttributes(*declaration, {{"version", "1.0"}, {"encoding", "UTF-8"}});
    rvt_xml_tree.AddChild(declaration);
    RVT_Node* map = RVT_Node::Create(RVT_ELEMENT);
    map->SetName(SystemMap);
    SetAttributes(*map, {{serial_tag, std::to_string(platforms + 1)},
                         {security_tag, switch_off},
                         {version_tag, old ? "2.0" : systemmap_version}});
    rvt_xml_tree.AddChild(map);
    for (int number = 1; number <= platforms; ++number) {
        AddConsoles(AddPlatformElement(*map, number, old), number, atoi(argv[2]), old);
    }
    Output out(STDOUT_FILENO);
    PrintTree(out, rvt_xml_tree);
    return out.Flush() ? 0 : 1;
}
