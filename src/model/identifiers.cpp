#include "model/identifiers.h"

#include <climits>
#include <cstdlib>

#include "model/lookups.h"
#include "model/vocabulary.h"
#include "xml/walk.h"

Result<long> ReadSerial(const RVT_Node& map) {
    const Result<RVT_Node*> serial = FindMapAttribute(map, serial_tag);
    if (!serial.ok()) {
        return serial.outcome();
    }
    const long number = strtol((*serial)->GetValue(), nullptr, 10);
    if (number < 1 || number >= INT_MAX) {
        return Outcome(ExitCode::kIncompleteMap, "File does not contain a valid serial number.");
    }
    return number;
}

Result<std::string> TakeSerial(const RVT_Node& map) {
    const Result<long> number = ReadSerial(map);
    if (!number.ok()) {
        return number.outcome();
    }
    RVT_Node* serial = FindAttribute(map, serial_tag);
    std::string taken = serial->GetValue();
    serial->SetValue(std::to_string(*number + 1));
    return taken;
}

Result<std::string_view> ReadID(const RVT_Node& element) {
    const RVT_Node* attribute = FindAttribute(element, kIDId);
    if (attribute == nullptr) {
        return Failure(ExitCode::kIncompleteMap, "ID not found in XML data.");
    }
    return std::string_view(attribute->GetValue());
}

std::string ConsoleID(std::string_view owner, std::string_view port) {
    return std::string(owner) + ":" + std::string(port);
}

std::string PropertyMapID(std::string_view owner) {
    return std::string(owner) + ".pmap";
}

bool EndsInPort(std::string_view id, std::string_view port) {
    const size_t colon = id.find(':');
    return colon != std::string_view::npos && id.substr(colon + 1) == port;
}

std::string ReplaceID(std::string_view id, std::string_view from, std::string_view to) {
    if (!id.starts_with(from)) {
        return std::string(id);
    }
    return std::string(to) + std::string(id.substr(from.size()));
}

void UpdateIDsOfChildren(const RVT_Node& node, std::string_view from, std::string_view to) {
    for (const RVT_Node& child : Children(node)) {
        for (RVT_Node& attribute : Attributes(child)) {
            if (attribute.IsName(ID_tag)) {
                attribute.SetValue(ReplaceID(attribute.GetValue(), from, to));
            }
        }
        UpdateIDsOfChildren(child, from, to);
    }
}
