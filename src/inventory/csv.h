// Comma-separated values as RFC 4180 has them and as spreadsheets write them: lines end in CR LF or
// LF, also the last one or not; empty lines are passed over.
#pragma once

#include <string_view>
#include <vector>

#include "base/outcome.h"

class CsvReader {
  public:
    // "text" is valid UTF-8 without zero bytes; fields are parts of it, so it must outlive them.
    explicit CsvReader(std::string_view text) : rest_(text) {}

    // Takes the next row; false when there is none. kNotWellFormed for quotes that are not closed,
    // or stand where none may, and for a carriage return by itself.
    Result<bool> Next();

    // Of the row that was taken: its fields, without quotes, and the line in which it, or the fault
    // that was found instead, begins, from 1.
    [[nodiscard]] const std::vector<std::string_view>& fields() const { return fields_; }
    [[nodiscard]] size_t line() const { return line_; }

  private:
    bool TakeLineEnd();
    void TakePlainField();
    bool TakeQuotedField();

    std::string_view rest_;
    std::vector<std::string_view> fields_;
    size_t line_ = 0;
    size_t next_line_ = 1;
};
