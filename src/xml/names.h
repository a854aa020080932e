// Element and attribute names. A map uses a dozen of them hundreds of thousands of times, so each
// is kept once and a node holds its number.
#pragma once

#include <cstdint>
#include <string_view>

using NameId = uint32_t;

// Names that are looked for, or made, at every element have ids of their own.
inline constexpr NameId kXmlnsId = 1;
inline constexpr NameId kNameId = 2;
inline constexpr NameId kValueId = 3;
inline constexpr NameId kPropertyId = 4;
inline constexpr NameId kReadonlyId = 5;
inline constexpr NameId kTypeId = 6;
inline constexpr NameId kIDId = 7;

// The id of "name", the same for the same text during the whole run. The empty name is 0.
NameId InternName(std::string_view name);

// The text of an id that InternName gave; valid for the whole run, with a terminating zero.
std::string_view NameText(NameId id);
