// What a run knows of its command line, and the inventory that it works on.
#pragma once

#include <string>

#include "commands/command.h"
#include "model/inventory.h"

using enum Action;

extern Command command;
extern Inventory inventory;

// Parts of the command by the names of the steps that use them.
extern Action action;
extern const char* xml_file;
extern bool notify_web;
extern bool notify_kfxd;
extern bool notify_lrp;
struct Options {
    std::string system_name;
    std::string kfxd_conf_file;
    std::string set_kfxd_conf_value;
    std::string get_kfxd_conf_value;
};
extern Options options;
