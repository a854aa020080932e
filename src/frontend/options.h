// The command line as the parser leaves it: the selected action and the values of its options.
#pragma once

#include <string>

#include "commands/changes.h"

// The action of a run, one value or none.
enum Action : unsigned {
    kNoAction = 0,
    kAddPlatform = 0x0001,
    kUpdatePlatform = 0x0002,
    kRemovePlatform = 0x0004,
    kAddSystem = 0x0008,
    kUpdateSystem = 0x0010,
    kRemoveSystem = 0x0020,
    kUpdateCache = 0x0080,
    kRemoveCache = 0x0100,
    kWriteKfxConf = 0x0200,
    kViewKfxConf = 0x0400,
    kSetSecurity = 0x0800,
    kViewSecurity = 0x1000,
    kConvertMap = 0x2000,
    kGetConfigValue = 0x4000,
    kSetConfigValue = 0x8000,
};

extern Action action;

// The path of the map; the word of the command line itself when -f is given.
extern const char* xml_file;

// Which notifications a change may run.
extern bool notify_web;
extern bool notify_kfxd;
extern bool notify_lrp;

// Values of options, as text; the initial values are the defaults. A switch is "true" or "false".
struct Options {
    std::string platform_name;
    std::string system_name;
    std::string new_name;
    std::string model;
    std::string type = "Unknown";
    std::string address;
    std::string port;
    std::string comment;
    std::string template_name;
    std::string security;
    std::string mapped_port = "0";
    std::string logging = "true";
    std::string events = "true";
    std::string enable = "true";
    std::string auth = "true";
    std::string event_file;
    std::string first_ts_port = "2001";
    std::string last_ts_port = "2008";
    std::string kfxd_conf_file;
    std::string set_kfxd_conf_value;
    std::string get_kfxd_conf_value;
    // What an update is to change.
    NameValueList name_val_list;
};

extern Options options;
