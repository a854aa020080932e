// Elements of maps.
#pragma once

#include <algorithm>
#include <map>
#include <sstream>

#include "fixture.h"

inline const std::string kAttributes = R"(serial="9" security="false" version="3.0")";

// The parts of "text" that are not empty.
inline std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) {
        parts.insert(parts.end(), part.empty() ? 0 : 1, part);
    }
    return parts;
}

// The words of a command line, separated by blanks; '' is the empty word.
inline std::vector<std::string> Words(const std::string& line) {
    std::vector<std::string> words = Split(line, ' ');
    std::replace(words.begin(), words.end(), std::string("''"), std::string());
    return words;
}

// "text" with its first "from" replaced.
inline std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    EXPECT_NE(text.find(from), std::string::npos) << from;
    return text.replace(std::min(text.find(from), text.size()), from.size(), to);
}

// A platform or console from "ID=1;Name=lab;Address=10.0.0.1", in that order; "~" stands for a
// missing identifier or property. Switches of consoles have their type but for those with "!".
inline std::string ElementText(size_t depth, const std::string& tag, const std::string& values,
                               const std::string& inside = "") {
    const std::string pad(depth, ' ');
    std::string id, properties;
    for (const std::string& pair : Split(values, ';')) {
        const std::string name = pair.substr(0, pair.find('='));
        const std::string value = pair.substr(name.size() + 1);
        const bool typed = tag == "Console" && (name == "Logging Enabled" ||
                                                name == "Events Enabled" || name == "Enable");
        if (name == "ID") {
            id = value;
        } else if (value != "~") {
            properties += pad + "        <Property name=\"" + name.substr(0, name.find('!')) +
                          "\" readonly=\"false\"" + (typed ? " type=\"boolean\"" : "") +
                          " value=\"" + value + "\"/>\n";
        }
    }
    return pad + "<" + tag + (id == "~" ? "" : " ID=\"" + id + "\"") + ">\n" + pad +
           "    <PropertyMap ID=\"" + id + ".pmap\">\n" + properties + pad +
           "    </PropertyMap>\n" + inside + pad + "</" + tag + ">\n";
}

// "values" with those of "changes" in their places.
inline std::string Merged(std::string values, const std::string& changes) {
    for (const std::string& pair : Split(changes, ';')) {
        const size_t at = values.find(";" + pair.substr(0, pair.find('=') + 1)) + 1;
        values.replace(at, values.find(';', at) - at, pair);
    }
    return values;
}

// What an element has that was added without options, with "changes"; consoles at a depth of 8
// (inside a platform) or 4 (standalone).
inline std::string PlatformText(const std::string& changes, const std::string& inside = "") {
    return ElementText(4, "Platform",
                       Merged(";ID=;Name=;Address=;Port "
                              "Number=;Model=M100;Description=;Template=;Logging Enabled=true;"
                              "Events Enabled=true;Enable=true;Event File=;Mapped Port=0;Auth "
                              "Enabled=true;First TS Port=2001;Last TS Port=2008;",
                              changes),
                       inside);
}
inline std::string ConsoleText(size_t depth, const std::string& changes,
                               const std::string& inside = "") {
    return ElementText(
        depth, "Console",
        Merged(";ID=;Address=;Name=;Type=Unknown;Port Number=;Description=;Logging Enabled=true;"
               "Events Enabled=true;Enable=true;Event File=;Mapped Port=0;Auth Enabled=true;",
               changes),
        inside);
}
