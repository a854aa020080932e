// Who holds the map's lock, as far as the lock file and the file system of processes tell.
#pragma once

#include <string>

// As in "locked by process 57 (tqsmgr -update cache -platform lab1), user anna, for 12 s": at most
// 200 bytes of the command, and the time since the lock file last changed. What cannot be known is
// left out; of a process that is gone that is said.
std::string DescribeHolder();
