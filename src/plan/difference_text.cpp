#include <algorithm>
#include <utility>

#include "base/quoted.h"
#include "plan/difference.h"

static std::string ValueText(const std::optional<std::string>& value) {
    return value ? Quoted(*value) : "none";
}

// Whether a new element has this value without being told.
static bool IsInitial(const ValueChange& change) {
    const auto row = std::ranges::find(kPropertyTable, change.key, &PropertyRow::key);
    const std::optional<std::string>& value = change.now ? change.now : change.before;
    return row != kPropertyTable.end() && row->initial && value == *row->initial;
}

static std::string CacheText(Sign sign, const ValueChange& change) {
    if (sign != Sign::kChanged) {
        return "cache";
    }
    return !change.before ? "cache added" : !change.now ? "cache removed" : "cache changed";
}

static std::string ChangeText(Sign sign, const ValueChange& change) {
    if (change.key == "cache") {
        return CacheText(sign, change);
    }
    return sign == Sign::kChanged
               ? change.key + ' ' + ValueText(change.before) + " -> " + ValueText(change.now)
               : change.key + ' ' + ValueText(change.now ? change.now : change.before);
}

static std::string MapText(const Difference& difference) {
    std::string text;
    for (const ValueChange& change : difference.values) {
        text += text.empty() ? "~ " : "\n~ ";
        text += change.key + ": " + ValueText(change.before) + " -> " + ValueText(change.now);
    }
    return text;
}

std::string TextOf(const Difference& difference) {
    if (difference.kind == "map") {
        return MapText(difference);
    }
    std::string text{static_cast<char>(difference.sign), ' '};
    text += difference.kind;
    text += ' ' + Quoted(difference.name);
    std::string_view separator = ": ";
    for (const ValueChange& change : difference.values) {
        const bool is_told =
            difference.sign == Sign::kChanged || (change.key != "name" && !IsInitial(change));
        if (is_told) {
            text.append(std::exchange(separator, ", ")).append(ChangeText(difference.sign, change));
        }
    }
    return text;
}
