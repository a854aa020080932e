// "tqs diff": how differences are printed.
#pragma once

#include <vector>

#include "base/output.h"
#include "plan/difference.h"

//   text   each on a line, as TextOf says
//   JSON   an array of objects with "change" (removed, added, changed), "kind" (map, platform,
//          console), "name", and "values": an array of objects with "key", "old" and "new", null
//          for none; each object on a line
enum class Form { kText, kJson };
void PrintDifferences(const std::vector<Difference>& differences, Form form, Output& out);
