#include "commands/command.h"

#include <algorithm>

const std::string* NewValue(const NameValueList& settings, Property property) {
    const auto last = std::find_if(settings.rbegin(), settings.rend(),
                                   [&](const NameValue& one) { return one.property == property; });
    return last == settings.rend() ? nullptr : &last->value;
}
