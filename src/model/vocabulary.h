// The names of the system map, used by every module in place of literals. Those of properties stand
// in the table of properties.
//
//     <SystemMap serial="8" security="false" version="3.0">
//         <Platform ID="7">
//             <PropertyMap ID="7.pmap">
//                 <Property name="Name" readonly="false" value="lab1"/> ...
//             </PropertyMap>
//             <Console ID="7:2003"> one PropertyMap </Console> ...
//             <Cache> content from outside </Cache>
//         </Platform>
//         <Console ID="12:2005"> a standalone console: its own address, no platform </Console>
//     </SystemMap>
#pragma once

#include <string_view>

// Elements.
namespace tag {
inline constexpr std::string_view SystemMap = "SystemMap";
inline constexpr std::string_view Platform = "Platform";
inline constexpr std::string_view Console = "Console";
inline constexpr std::string_view PropertyMap = "PropertyMap";
inline constexpr std::string_view Property = "Property";
inline constexpr std::string_view Cache = "Cache";
}  // namespace tag

// Attributes.
inline constexpr std::string_view ID_tag = "ID";
inline constexpr std::string_view name_tag = "name";
inline constexpr std::string_view readonly_tag = "readonly";
inline constexpr std::string_view type_tag = "type";
inline constexpr std::string_view value_tag = "value";
inline constexpr std::string_view serial_tag = "serial";
inline constexpr std::string_view security_tag = "security";
inline constexpr std::string_view version_tag = "version";

// Values.
inline constexpr std::string_view systemmap_version = "3.0";
inline constexpr std::string_view unknown_value = "Unknown";  // a model or OS type not known

// The four switches. Only the exact text "true" counts as on.
inline constexpr std::string_view switch_on = "true";
inline constexpr std::string_view switch_off = "false";
