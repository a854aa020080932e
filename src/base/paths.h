// Every path of the product. Nothing else in the program spells one.
//
// paths.cpp is compiled twice: the shipped program's root is "/", the test program's is empty, so
// that each test runs in a tree of its own below its working directory.
#pragma once

#include <span>

namespace paths {

extern const char* const kProductDir;  // its group is given to every file that a run creates
extern const char* const kSystemMap;   // the map unless -f names another
extern const char* const kLockFile;    // serialises the runs
extern const char* const kKfxConf;     // the console daemon's configuration, generated
extern const char* const kModels;      // known hardware models
extern const char* const kOsTypes;     // known OS types
extern const char* const kEventsDir;   // event files
extern const char* const kLog;         // transaction log
extern const char* const kOldLog;      // its previous generation
extern const char* const kStdInCopy;   // mkstemp template of the captured standard input
extern const char* const kConfigCopy;  // mkstemp template of the copy made for -config -set
extern const char* const kNotifyWeb;   // shell commands that tell other components of a change
extern const char* const kNotifyKfxd;
extern const char* const kNotifyLrp;

// The files among them that have a fixed name in the product's folders.
std::span<const char* const> ProductFiles();

}  // namespace paths
