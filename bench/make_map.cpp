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

#include "base/output.h"
#include "model/identifiers.h"
#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/rvt_xml_writer.h"

static std::string Address(int number) {
    return "10." + std::to_string(number / 62500 % 250 + 1) + "." +
           std::to_string(number / 250 % 250) + "." + std::to_string(number % 250 + 1);
}

// The initial values of an owner's properties, without those that an older map lacks.
static PropertyValues InitialValues(Owner owner, bool old) {
    PropertyValues values;
    for (const Property property : PropertiesOf(owner)) {
        const PropertyRow& row = RowOf(property);
        const bool lacks = row.converted == Converted::kPlatformsAndTheirConsoles ||
                           (row.converted == Converted::kPlatforms && owner == Owner::kPlatform);
        if (row.initial && !(old && lacks)) {
            values[property] = *row.initial;
        }
    }
    return values;
}

static void AddConsoles(RVT_Node& platform, int number, int count, bool old) {
    PropertyValues values = InitialValues(Owner::kConsole, old);
    const std::string address = Address(number);
    values[Property::kAddress] = address;
    values[Property::kType] = old ? "AIX" : "linux";
    for (int i = 0; i < count; ++i) {
        const std::string name = "console-" + std::to_string(number) + "-" + std::to_string(i);
        const std::string port = std::to_string(2001 + i);
        values[Property::kName] = name;
        values[Property::kPort] = port;
        AddOwner(platform, Owner::kConsole, ConsoleID(std::to_string(number), port), values);
    }
}

static RVT_Node& AddPlatformElement(RVT_Node& map, int number, bool old) {
    const bool shares_name = old && number % 4 == 0;
    const std::string name =
        (shares_name ? "LAB-" : "lab-") + std::to_string(shares_name ? number + 1 : number);
    const std::string address = Address(old && number % 3 == 0 ? number / 6 * 6 : number);
    PropertyValues values = InitialValues(Owner::kPlatform, old);
    values[Property::kName] = name;
    values[Property::kAddress] = address;
    values[Property::kPort] = "7001";
    values[Property::kModel] = "M100";
    RVT_Node& platform = AddOwner(map, Owner::kPlatform, std::to_string(number), values);
    if (old) {
        SetAttributes(AddElement(*FindPropertyMap(platform), tag::Property),
                      {{name_tag, "Conn"}, {readonly_tag, switch_off}, {value_tag, "TS"}});
    }
    return platform;
}

int main(int argc, char** argv) {
    if (argc < 3) {
        return 2;
    }
    const int platforms = atoi(argv[1]);
    const bool old = argc > 3;
    RVT_Node* declaration = RVT_Node::Create(RVT_XML_DECL);
    SetAttributes(*declaration, {{"version", "1.0"}, {"encoding", "UTF-8"}});
    RVT_XML_Tree tree;
    tree.AddChild(declaration);
    RVT_Node* map = RVT_Node::Create(RVT_ELEMENT);
    map->SetName(tag::SystemMap);
    SetAttributes(*map, {{serial_tag, std::to_string(platforms + 1)},
                         {security_tag, switch_off},
                         {version_tag, old ? "2.0" : systemmap_version}});
    tree.AddChild(map);
    for (int number = 1; number <= platforms; ++number) {
        AddConsoles(AddPlatformElement(*map, number, old), number, atoi(argv[2]), old);
    }
    Output out(STDOUT_FILENO);
    return PrintTree(out, tree).ok() && out.Flush() ? 0 : 1;
}
