#include "report/table.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/text.h"

static constexpr size_t kGap = 2;
// Places that a column has at most, whatever it holds.
static constexpr size_t kWidest = 400;

// How many places of a line a character takes: none for one that joins the one before it, two for
// those of East Asia and for pictures.
static size_t WidthOf(int character) {
    struct Range {
        int first, last;
        size_t width;
    };
    static constexpr auto kRanges = std::to_array<Range>({{0x300, 0x36F, 0},
                                                          {0x1100, 0x115F, 2},
                                                          {0x200B, 0x200F, 0},
                                                          {0x2E80, 0xA4CF, 2},
                                                          {0xAC00, 0xD7A3, 2},
                                                          {0xF900, 0xFAFF, 2},
                                                          {0xFE00, 0xFE0F, 0},
                                                          {0xFE30, 0xFE6F, 2},
                                                          {0xFF00, 0xFF60, 2},
                                                          {0xFFE0, 0xFFE6, 2},
                                                          {0x1F300, 0x1FAFF, 2},
                                                          {0x20000, 0x3FFFD, 2}});
    const auto* const range = std::ranges::find_if(kRanges, [character](const Range& one) {
        return character >= one.first && character <= one.last;
    });
    return range == kRanges.end() ? 1 : range->width;
}

// The front of "text" that takes at most "width" places; "width" becomes what it takes.
static std::string_view Front(std::string_view text, size_t& width) {
    size_t taken = 0;
    std::string_view rest = text;
    while (!rest.empty()) {
        std::string_view next = rest;
        const size_t more = WidthOf(TakeCharacter(next));
        if (taken + more > width) {
            break;
        }
        taken += more;
        rest = next;
    }
    width = taken;
    return text.substr(0, text.size() - rest.size());
}

void Table::AddColumn(std::string_view title) {
    ++column_count_;
    std::string capitals(title);
    std::ranges::transform(capitals, capitals.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    AddCell(capitals);
}

void Table::AddCell(std::string_view text) {
    // A character takes up to four bytes.
    std::string shown = Printable(text.substr(0, 4 * kWidest + 1));
    size_t width = shown.size();
    static_cast<void>(Front(shown, width));
    cells_.push_back(std::move(shown));
    widths_.push_back(width);
}

std::vector<size_t> Table::Widths(size_t columns) const {
    std::vector<size_t> widths(column_count_, 0);
    for (size_t i = 0; i < cells_.size(); ++i) {
        size_t& width = widths[i % column_count_];
        width = std::min(std::max(width, widths_[i]), kWidest);
    }
    size_t total = kGap * (column_count_ - 1);
    for (const size_t width : widths) {
        total += width;
    }
    for (; columns != 0 && total > columns; --total) {
        const auto widest = std::ranges::max_element(widths);
        if (*widest <= widths_[static_cast<size_t>(widest - widths.begin())]) {
            break;
        }
        --*widest;
    }
    return widths;
}

void Table::Put(size_t columns, Output& out) const {
    const std::vector<size_t> widths = Widths(columns);
    size_t blanks = 0;  // before the next text; none at the end of a line
    for (size_t i = 0; i < cells_.size(); ++i) {
        const size_t column = i % column_count_;
        const bool is_cut = widths_[i] > widths[column];
        size_t width = is_cut ? widths[column] - 1 : widths_[i];
        if (width > 0) {
            out.PutSpaces(std::exchange(blanks, 0));
            out.Put(Front(cells_[i], width));
            out.Put(is_cut ? "…" : "");
        }
        blanks += widths[column] - width - (is_cut ? 1 : 0) + kGap;
        if (column + 1 == column_count_) {
            out.Put("\n");
            blanks = 0;
        }
    }
}
