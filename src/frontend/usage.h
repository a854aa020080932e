// What -h prints.
#pragma once

extern const char* const usage_msg;
