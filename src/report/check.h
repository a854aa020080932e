// "tqs check": every rule that the commands enforce, for a whole inventory at once, and what only a
// look at all of it shows.
#pragma once

#include <string>
#include <vector>

#include "model/element.h"

struct Finding {
    // In a map the number of the start tag that it is about, from 1, in document order; in another
    // inventory that of the element, and 0 for the inventory itself.
    size_t position = 0;
    bool is_error = true;
    std::string text;
    size_t earlier = 0;  // another position that "text" mentions; 0 for none
};

// What is wrong with an inventory, in its order. "document" is that of a map; without one, it is an
// inventory from a file, which has no identifiers and may leave properties out.
std::vector<Finding> Check(const Outline& outline, const RVT_XML_Tree* document);
