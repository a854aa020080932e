#include "report/difference_form.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "base/quoted.h"

static std::string JsonOf(const Difference& difference) {
    using nlohmann::ordered_json;
    const auto value = [](const std::optional<std::string>& text) {
        return text ? ordered_json(*text) : ordered_json(nullptr);
    };
    ordered_json json;
    json["change"] = difference.sign == Sign::kChanged   ? "changed"
                     : difference.sign == Sign::kRemoved ? "removed"
                                                         : "added";
    json["kind"] = difference.kind;
    json["name"] = difference.name;
    json["values"] = ordered_json::array();
    for (const ValueChange& change : difference.values) {
        json["values"].push_back(
            {{"key", change.key}, {"old", value(change.before)}, {"new", value(change.now)}});
    }
    return WithEscapes(json.dump(-1, ' ', false, ordered_json::error_handler_t::replace));
}

void PrintDifferences(const std::vector<Difference>& differences, Form form, Output& out) {
    const bool is_json = form == Form::kJson;
    out.Put(is_json ? "[" : "");
    std::string_view separator = is_json ? "\n" : "";
    for (const Difference& difference : differences) {
        out.Put(std::exchange(separator, is_json ? ",\n" : ""));
        out.Put(is_json ? JsonOf(difference) : TextOf(difference) + '\n');
    }
    out.Put(is_json ? (differences.empty() ? "]\n" : "\n]\n") : "");
}
