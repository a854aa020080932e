// Text in aligned columns, for people.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "base/output.h"

class Table {
  public:
    // A column with a title, shown in capitals.
    void AddColumn(std::string_view title);
    // The next cell, row by row. Control characters are shown as "?".
    void AddCell(std::string_view text);

    // Puts the title line and all rows. Where "columns" is not 0, the widest columns are cut until
    // a line fits that many characters, as far as titles allow; a cell that is cut ends in "…".
    void Put(size_t columns, Output& out) const;

  private:
    [[nodiscard]] std::vector<size_t> Widths(size_t columns) const;

    size_t column_count_ = 0;
    std::vector<std::string> cells_;  // the titles first
    std::vector<size_t> widths_;      // of the cells, in characters on a screen
};
