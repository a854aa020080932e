// The order of the commands of a change script.
//
// A command is refused while another element has the name, address or port that it gives. So each
// unit of work waits until those that have it have given it up. When nobody can go on, some wait
// for each other in a circle, and one of them takes a value in between, which neither inventory
// has. Two consoles of a platform that swap their ports:
//
//     a has port 1 and needs 2, b has 2 and needs 1: both wait
//     tqsmgr -update system -name "a" -port "61001"    a gives up port 1, so b can go
//     tqsmgr -update system -name "b" -port "1"        b gives up port 2, so a can go
//     tqsmgr -update system -name "a" -port "2"
#pragma once

#include "plan/work.h"

// The commands for "work", in an order in which each is accepted in its turn, unless an element
// that is left alone has what one of them gives. The units are used up.
std::vector<Step> InOrder(Work& work, const Comparison& comparison);
