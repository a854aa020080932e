// A platform's cache: a subtree from outside, kept and written back as it came.
#pragma once

#include <functional>

#include "base/outcome.h"
#include "commands/command.h"
#include "model/inventory.h"

// Moves the Cache element of "cache_document", an XML declaration followed by that element, under
// the platform as its last child, in place of the one it had. The document must not be used
// afterwards. kIncompleteMap "First line must contain a <?xml ...> declaration." or "Cache not
// found in XML data."; kLookupFailed "Cannot find Platform \"%s\".". A cache that the map could not
// hold, since the next run could not read it, ends the run as the reader does. Where "fits" is
// given and fails for the cache, so does this.
Outcome UpdateCache(const Command& command, Inventory& inventory,
                    const RVT_XML_Tree& cache_document,
                    const std::function<Outcome(const RVT_Node& cache)>& fits);

// Removes the platform's cache. kLookupFailed as Inventory::FindPlatformWithCache.
Outcome RemoveCache(const Command& command, Inventory& inventory);
