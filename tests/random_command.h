// Commands from words and from rules.
#pragma once

#include <random>

#include "commands/parse_command.h"

// After the headers whose names it would hide.
#include "sample_map.h"

// What is made of these words.
inline Result<Command> Parsed(const std::vector<std::string>& words) {
    std::vector<const char*> pointers;
    std::ranges::transform(words, std::back_inserter(pointers), &std::string::c_str);
    return ParseCommand(pointers);
}

// A command made of the letter T by the rules, each of which replaces a word by one of its texts.
inline Command RandomCommand(std::mt19937& random, const std::string& rules) {
    std::string line = "T";
    for (const std::string& rule : Split(rules, ';')) {
        const std::vector<std::string> texts = Split(rule, '|');
        for (const std::string& word : Words(std::exchange(line, ""))) {
            line += (word == texts[0] ? texts[1 + random() % (texts.size() - 1)] : word) + ' ';
        }
    }
    return *Parsed(Words(line));
}
