#include "commands/command.h"

#include <algorithm>

const std::string* NewValue(const Command& command, Property property) {
    const auto& settings = command.settings;
    const auto last = std::find_if(settings.rbegin(), settings.rend(),
                                   [&](const NameValue& one) { return one.property == property; });
    return last == settings.rend() ? nullptr : &last->value;
}
