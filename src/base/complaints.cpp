#include "base/complaints.h"

#include <unistd.h>

#include <string>

#include "base/files.h"

static std::string complaints;

void Complain(std::string_view text) {
    complaints += text;
}

void PrintComplaints() {
    static_cast<void>(WriteAll(STDERR_FILENO, complaints));
    complaints.clear();
}
