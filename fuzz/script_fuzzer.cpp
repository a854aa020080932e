// Bytes as a change script. What is read of it and printed as the log prints it is read again.
#include <algorithm>
#include <cstdint>

#include "in_process.h"
#include "translog/change_script.h"
#include "translog/shell_text.h"

static std::string Printed(const ChangeScript& script) {
    std::string text;
    for (const ScriptCommand& command : script.commands) {
        for (const char* const& word : command.words) {
            text += ShellWord(word, &word == &command.words.front()) + ' ';
        }
        if (command.input) {
            AppendHereDocument(*command.input, text);
        }
        text += '\n';
    }
    return text;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const ChangeScript script = ReadChangeScript({reinterpret_cast<const char*>(data), size});
    const std::string text = Printed(script);
    const ChangeScript again = ReadChangeScript(text);
    Require(again.faults.empty() && Printed(again) == text, "what is printed is read again");
    Require(again.commands.size() == script.commands.size(), "as the same commands");
    for (size_t i = 0; i < again.commands.size(); ++i) {
        const auto& [one, other] = std::pair(script.commands[i], again.commands[i]);
        Require(std::ranges::equal(one.words, other.words,
                                   [](std::string_view a, std::string_view b) { return a == b; }),
                "with the same words");
        Require(one.input == other.input, "and the same input");
    }
    return 0;
}
