// "tqs check": every rule that the commands enforce, for a whole map at once, and what only a look
// at all of it shows.
#pragma once

#include <string>
#include <vector>

#include "model/inventory.h"

struct Finding {
    size_t element = 0;  // the start tag it is about, counted from 1 in the order of the document
    bool is_error = true;
    std::string text;
    size_t earlier = 0;  // the start tag that "text" tells of, likewise; 0 for none
};

// What a map can say. An inventory file has no identifiers, and may leave properties out.
enum class Says { kAll, kSome };

// What is wrong with the map, in the order of the document.
std::vector<Finding> Check(Inventory& inventory, Says says = Says::kAll);
