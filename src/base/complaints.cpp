#include "base/complaints.h"

#include <unistd.h>

#include <string>

#include "base/files.h"
#include "base/text.h"

static std::string complaints;

void Complain(std::string_view text) {
    complaints += text;
}

void ComplainOnOneLine(std::string_view message) {
    complaints += "tqs: " + OneLine(std::string(message)) + '\n';
}

void PrintComplaints(bool is_foreign) {
    if (is_foreign) {
        std::string lines;
        for (std::string_view rest = complaints; !rest.empty();) {
            const std::string_view line = TakeLine(rest);
            lines += OneLine(std::string(line.substr(0, line.size() - 1))) + '\n';
        }
        complaints = lines;
    }
    static_cast<void>(WriteAll(STDERR_FILENO, complaints));
    complaints.clear();
}
