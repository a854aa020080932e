// The names of the system map, used by every module in place of literals.
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
inline constexpr std::string_view SystemMap = "SystemMap";
inline constexpr std::string_view Platform = "Platform";
inline constexpr std::string_view Console = "Console";
inline constexpr std::string_view State = "State";
inline constexpr std::string_view PropertyMap = "PropertyMap";
inline constexpr std::string_view Property = "Property";
inline constexpr std::string_view Cache = "Cache";

// Attributes.
inline constexpr std::string_view ID_tag = "ID";
inline constexpr std::string_view name_tag = "name";
inline constexpr std::string_view readonly_tag = "readonly";
inline constexpr std::string_view type_tag = "type";
inline constexpr std::string_view value_tag = "value";
inline constexpr std::string_view serial_tag = "serial";
inline constexpr std::string_view security_tag = "security";
inline constexpr std::string_view version_tag = "version";

// Properties.
inline constexpr std::string_view NameProp = "Name";
inline constexpr std::string_view AddrProp = "Address";
inline constexpr std::string_view PortProp = "Port Number";
inline constexpr std::string_view TypeProp = "Type";
inline constexpr std::string_view ModelProp = "Model";
inline constexpr std::string_view DescProp = "Description";
inline constexpr std::string_view TemplateProp = "Template";
inline constexpr std::string_view LoggingProp = "Logging Enabled";
inline constexpr std::string_view EventsProp = "Events Enabled";
inline constexpr std::string_view EnableProp = "Enable";
inline constexpr std::string_view EventFileProp = "Event File";
inline constexpr std::string_view MappedPortProp = "Mapped Port";
inline constexpr std::string_view AuthProp = "Auth Enabled";
inline constexpr std::string_view FTSPProp = "First TS Port";
inline constexpr std::string_view LTSPProp = "Last TS Port";
inline constexpr std::string_view ConnProp = "Conn";        // older maps
inline constexpr std::string_view ConsoleProp = "Console";  // older maps

// Values.
inline constexpr std::string_view NAT_Box = "NAT";
inline constexpr std::string_view TerminalServer = "TS";
inline constexpr std::string_view DefaultEventFile;  // empty
inline constexpr std::string_view systemmap_version = "3.0";
inline constexpr std::string_view unknown_value = "Unknown";  // a model or OS type not known

// The four switches. Only the exact text "true" counts as on.
inline constexpr std::string_view switch_on = "true";
inline constexpr std::string_view switch_off = "false";
