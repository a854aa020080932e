// An inventory in JSON.
#include <algorithm>
#include <array>
#include <bitset>
#include <nlohmann/json.hpp>
#include <set>

#include "base/arena.h"
#include "base/quoted.h"
#include "base/text.h"
#include "inventory/inventory_reader.h"

namespace {

constexpr auto kMembers = std::to_array<const char*>({"version", "serial", "security", "items"});

// Takes what the library's parser finds, in its order, and stops it at the first fault: nothing is
// kept that does not belong there, however deep it is nested.
class JsonReader : public nlohmann::json_sax<nlohmann::json> {
  public:
    JsonReader(std::string_view text, InventoryFile& file) : text_(text), file_(file) {}

    Outcome outcome;

    bool null() override { return WrongType("null"); }
    bool number_integer(number_integer_t /*value*/) override { return WrongType("a number"); }
    bool number_unsigned(number_unsigned_t /*value*/) override { return WrongType("a number"); }
    bool number_float(number_float_t /*value*/, const string_t& /*text*/) override {
        return WrongType("a number");
    }
    bool binary(binary_t& /*value*/) override { return WrongType("binary"); }
    bool boolean(bool value) override {
        const bool is_fit = in_ == In::kItem ? IsSwitch(key_) : word_ == "security";
        return is_fit ? Value(value ? "true" : "false") : WrongType("a boolean");
    }
    bool string(string_t& value) override {
        return in_ == In::kItem || (in_ == In::kDocument && word_ != "items")
                   ? Value(value)
                   : WrongType("a string");
    }

    bool start_object(size_t /*size*/) override {
        if (in_ != In::kNothing && in_ != In::kItems) {
            return WrongType("an object");
        }
        if (in_ == In::kItems) {
            file_.rows.push_back({.number = file_.rows.size() + 1});
            seen_.reset();
        }
        in_ = in_ == In::kItems ? In::kItem : In::kDocument;
        return true;
    }
    bool end_object() override {
        if (in_ == In::kDocument && !members_.contains("items")) {
            return Fail(WrongAt(file_.name, "The member \"items\" is missing."));
        }
        if (in_ == In::kItem) {
            TakeStandalone(file_.rows.back());
        }
        in_ = in_ == In::kItem ? In::kItems : In::kNothing;
        return true;
    }
    bool start_array(size_t /*size*/) override {
        if (in_ != In::kDocument || word_ != "items") {
            return WrongType("an array");
        }
        in_ = In::kItems;
        return true;
    }
    bool end_array() override {
        in_ = In::kDocument;
        return true;
    }

    bool key(string_t& word) override {
        word_ = word;
        const auto known = std::ranges::find(keys_, word, &Key::word);
        const bool is_known = in_ == In::kItem
                                  ? known != keys_.end()
                                  : std::ranges::find(kMembers, word) != kMembers.end();
        if (!is_known) {
            return Fail(UnknownKeyAt(Place(), word));
        }
        bool is_new = false;
        if (in_ == In::kItem) {
            key_ = *known;
            const auto index = static_cast<size_t>(known - keys_.begin());
            is_new = !seen_.test(index);
            seen_.set(index);
        } else {
            is_new = members_.insert(word).second;
        }
        return is_new || Fail(WrongAt(Place(), "The key " + Quoted(word) + " stands there twice."));
    }

    bool parse_error(size_t position, const std::string& /*token*/,
                     const nlohmann::detail::exception& error) override {
        // [json.exception.parse_error.101] parse error at line 1, column 2: MESSAGE; last read: ...
        std::string_view message = error.what();
        const size_t column = message.find(", column ");
        const size_t colon =
            column == std::string_view::npos ? message.find("] ") : message.find(": ", column);
        message.remove_prefix(std::min(colon + 2, message.size()));
        const size_t line = LineAt(text_, position == 0 ? 0 : position - 1);
        return Fail(WrongAt(file_.name + ':' + std::to_string(line),
                            std::string(message.substr(0, message.find("; last read:"))),
                            ExitCode::kNotWellFormed));
    }

  private:
    enum class In { kNothing, kDocument, kItems, kItem };

    [[nodiscard]] std::string Place() const {
        return in_ == In::kItem || in_ == In::kItems ? PositionOf(file_, file_.rows.back())
                                                     : file_.name;
    }
    // A list leaves out what is missing, also the platform of a console that is in none. An item
    // that has everything else, the identifier too, which nobody writes by hand, means that.
    void TakeStandalone(Row& row) const {
        const auto id = std::ranges::find(keys_, Key::Of::kId, &Key::of);
        const bool is_whole =
            seen_.test(static_cast<size_t>(id - keys_.begin())) &&
            std::ranges::all_of(PropertiesOf(Owner::kConsole),
                                [&row](Property property) { return row.values.Has(property); });
        if (is_whole && row.owner == Owner::kConsole && row.platform.data() == nullptr) {
            row.platform = "";
        }
    }
    bool Fail(Outcome failure) {
        outcome = std::move(failure);
        return false;
    }
    bool WrongType(const std::string& what) {
        return Fail(in_ == In::kItems
                        ? WrongAt(file_.name, "An item is " + what + '.')
                        : WrongAt(Place(), "The value of " + Quoted(word_) + " is " + what + '.'));
    }
    bool Value(std::string_view value) {
        if (!IsXmlText(value)) {
            return Fail(WrongAt(Place(), "No map can hold the value " + Shortened(value) + "."));
        }
        const std::string_view kept = arena::Copy(value);
        if (in_ == In::kItem) {
            outcome = Take(file_, file_.rows.back(), key_, kept);
            return outcome.ok();
        }
        if (word_ == "security") {
            file_.security = kept;
        }
        return true;
    }

    std::string_view text_;
    InventoryFile& file_;
    In in_ = In::kNothing;
    std::string word_;  // the last key
    Key key_ = {};
    const std::vector<Key> keys_ = Keys();
    std::set<std::string> members_;
    std::bitset<kPropertyCount + 8> seen_;  // of "keys_", in the present item
};

}  // namespace

Outcome ReadJson(std::string_view text, InventoryFile& file) {
    // The parser takes a zero byte for the end.
    if (const size_t zero = text.find('\0'); zero != std::string_view::npos) {
        return WrongAt(file.name + ':' + std::to_string(LineAt(text, zero)),
                       "A zero byte stands there.", ExitCode::kNotWellFormed);
    }
    JsonReader reader(text, file);
    static_cast<void>(nlohmann::json::sax_parse(text, &reader));
    return reader.outcome;
}
