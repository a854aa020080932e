// What the tests of faults and of load have in common.
#pragma once

#include <cstdlib>
#include <regex>

#include "../sample_map.h"

namespace fs = std::filesystem;

// The trees of these tests lie in memory where the system has such a folder.
inline const bool in_memory = fs::is_directory("/dev/shm") && setenv("TMPDIR", "/dev/shm", 1) == 0;

// The exit codes in a log, whose entries from the first banner on must be whole and by themselves.
inline std::vector<int> LoggedCodes(std::string log) {
    static const std::string kRule(74, '#');
    static const std::regex kEntry(
        kRule + R"(\n# Time: \d\d/\d\d/\d{4} \d\d:\d\d:\d\d\n)" + kRule +
        R"(\n\n(?:(?!###)[^\n]*\n)+?echo "Recorded Exit Code = (\d+), This Exit Code = \$\?"\n\n)"
        R"(# EXIT CODE: (\d+)\n(\n|# ERROR MESSAGE:\n(?:#   [^\n]*\n)+\n))");
    log.erase(0, log.find(kRule));
    std::vector<int> codes;
    size_t end = 0;
    const auto flags = std::regex_constants::match_continuous;
    for (std::sregex_iterator entry(log.begin(), log.end(), kEntry, flags), none; entry != none;
         ++entry) {
        codes.push_back(std::stoi((*entry)[1]));
        EXPECT_EQ((*entry)[1], (*entry)[2]);
        EXPECT_EQ((*entry)[1] == "0", (*entry)[3] == "\n");
        end += static_cast<size_t>(entry->length());
    }
    EXPECT_EQ(end, log.size()) << log;
    return codes;
}
