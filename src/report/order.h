// The order of the commands of a change script.
#pragma once

#include "report/work.h"

// The commands for "work", in an order in which each is accepted in its turn: one waits for those
// that still hold the name, address or port that it gives; where they wait for each other, an
// element takes a name, an address or a port in between that neither inventory has. The units are
// used up.
std::vector<Step> InOrder(Work& work, const Comparison& comparison, Crowding crowding);
