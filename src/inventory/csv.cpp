#include "inventory/csv.h"

#include <algorithm>
#include <string>

#include "base/arena.h"

// Takes the end of a line, if one is next.
bool CsvReader::TakeLineEnd() {
    const size_t length = rest_.starts_with("\r\n") ? 2 : rest_.starts_with('\n') ? 1 : 0;
    rest_.remove_prefix(length);
    next_line_ += length == 0 ? 0 : 1;
    return length > 0;
}

void CsvReader::TakePlainField() {
    const auto* const end = std::ranges::find_if(
        rest_, [](char c) { return c == ',' || c == '"' || c == '\r' || c == '\n'; });
    fields_.push_back(rest_.substr(0, static_cast<size_t>(end - rest_.begin())));
    rest_.remove_prefix(fields_.back().size());
}

// False when the field does not end.
bool CsvReader::TakeQuotedField() {
    std::string before;  // a doubled quote, with it
    size_t begin = 1;
    size_t end = rest_.find('"', begin);
    while (end != std::string_view::npos && rest_.substr(end + 1).starts_with('"')) {
        before += rest_.substr(begin, end + 1 - begin);
        begin = end + 2;
        end = rest_.find('"', begin);
    }
    if (end == std::string_view::npos) {
        return false;
    }
    const std::string_view last = rest_.substr(begin, end - begin);
    fields_.push_back(before.empty() ? last : arena::Copy(before.append(last)));
    next_line_ += static_cast<size_t>(std::ranges::count(rest_.substr(0, end), '\n'));
    rest_.remove_prefix(end + 1);
    return true;
}

Result<bool> CsvReader::Next() {
    const auto failure = [](const char* text) { return Outcome(ExitCode::kNotWellFormed, text); };
    fields_.clear();
    while (TakeLineEnd()) {
    }
    line_ = next_line_;
    if (rest_.empty()) {
        return false;
    }
    for (bool is_first = true; is_first || rest_.starts_with(','); is_first = false) {
        rest_.remove_prefix(is_first ? 0 : 1);
        if (!rest_.starts_with('"')) {
            TakePlainField();
        } else if (!TakeQuotedField()) {
            return failure("A quote is still open at the end of the file.");
        }
    }
    if (rest_.empty() || TakeLineEnd()) {
        return true;
    }
    return failure(rest_.starts_with('\r')
                       ? "A carriage return stands without a line feed."
                       : "A quote stands within a field, or a text behind a quoted one.");
}
