#include "model/validation.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include "base/complaints.h"
#include "base/files.h"
#include "base/paths.h"
#include "base/text.h"

static bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

static bool IsLetterOrDigit(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

static bool IsAllDigits(std::string_view text) {
    return std::all_of(text.begin(), text.end(), IsDigit);
}

bool IsValidName(std::string_view name) {
    return std::all_of(name.begin(), name.end(),
                       [](char c) { return IsLetterOrDigit(c) || c == '.' || c == '-'; });
}

bool IsValidAddress(std::string_view address) {
    static constexpr int kFields = 4;
    if (address.size() >= sizeof "255.255.255.255") {
        return false;
    }
    for (int field = 0; field < kFields; ++field) {
        // The last field runs to the end, so a fifth one makes it hold a ".".
        const size_t dot = field == kFields - 1 ? address.size() : address.find('.');
        if (dot == std::string_view::npos) {
            return false;
        }
        const std::string_view digits = address.substr(0, dot);
        if (digits.empty() || digits.size() > 3 || !IsAllDigits(digits)) {
            return false;
        }
        const int value = std::stoi(std::string(digits));
        if (value > 255 || (field == 0 && value == 0)) {
            return false;
        }
        address.remove_prefix(std::min(dot + 1, address.size()));
    }
    return true;
}

bool IsValidPortNumber(std::string_view port) {
    return !port.empty() && IsAllDigits(port);
}

namespace {

// A decimal integer of any length: its digits without leading zeros, none for zero.
struct Integer {
    bool negative = false;
    std::string digits;
};

Integer LeadingInteger(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    Integer integer;
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        integer.negative = text.front() == '-';
        text.remove_prefix(1);
    }
    text = text.substr(
        0, static_cast<size_t>(std::find_if_not(text.begin(), text.end(), IsDigit) - text.begin()));
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
    integer.digits = text;
    integer.negative = integer.negative && !text.empty();
    return integer;
}

// Whether low <= high <= low + span, for integers without sign.
bool IsWithin(std::string low, const std::string& high, int span) {
    const auto at_most = [](const std::string& a, const std::string& b) {
        return a.size() != b.size() ? a.size() < b.size() : a <= b;
    };
    if (!at_most(low, high)) {
        return false;
    }
    int carry = span;
    for (size_t i = low.size(); carry > 0; --i) {
        if (i == 0) {
            low.insert(0, std::to_string(carry));
            break;
        }
        const int sum = low[i - 1] - '0' + carry;
        low[i - 1] = static_cast<char>('0' + sum % 10);
        carry = sum / 10;
    }
    return at_most(high, low);
}

}  // namespace

bool IsValidPortRange(std::string_view first, std::string_view last) {
    static constexpr int kMostPorts = 16;
    const Integer low = LeadingInteger(first);
    const Integer high = LeadingInteger(last);
    if (low.negative && high.negative) {
        return IsWithin(high.digits, low.digits, kMostPorts - 1);
    }
    if (low.negative != high.negative) {
        // Only a range of a few ports around zero can be narrow enough.
        const size_t longest = std::max(low.digits.size(), high.digits.size());
        return low.negative && longest <= 2 &&
               std::stoi("0" + low.digits) + std::stoi("0" + high.digits) < kMostPorts;
    }
    return IsWithin(low.digits, high.digits, kMostPorts - 1);
}

bool IsPlainText(std::string_view text) {
    return text.find_first_of("\t\n\r") == std::string_view::npos && IsXmlText(text);
}

static bool IsSkipped(std::string_view line) {
    return line.front() == '#' || line.front() == '\n' || line.front() == '\r';
}

// Whether the field at the front of "rest", which ends at the first of "ends" or with the text, is
// "wanted", letter case ignored. Most lines differ in the first letter.
static bool FieldIs(std::string_view rest, std::string_view wanted, std::string_view ends) {
    const bool differs_at_once =
        !wanted.empty() && !rest.empty() && LowerCase(rest.front()) != LowerCase(wanted.front());
    return !differs_at_once && EqualsIgnoringCase(rest.substr(0, wanted.size()), wanted) &&
           std::min(rest.find_first_of(ends), rest.size()) == wanted.size();
}

// The content of a reference file; none, and reported, when it cannot be read.
static std::optional<std::string> ReadReferenceFile(const char* path) {
    std::string text;
    const FileDescriptor file = OpenForReading(path);
    if (!file.IsOpen() || !ReadToEnd(file.get(), text, kLargestInMemory)) {
        Complain(std::string("cannot open ") + path + " : " + strerror(errno) + "\n");
        return std::nullopt;
    }
    return text;
}

// Whether some line of the file matches "value". A line has its line end, but for a last one that
// lacks it.
static bool FindLine(std::string_view text, std::string_view value,
                     bool (*matches)(std::string_view line, std::string_view value)) {
    while (!text.empty()) {
        const std::string_view line = TakeLine(text);
        if (!IsSkipped(line) && matches(line, value)) {
            return true;
        }
    }
    return false;
}

bool ReferenceFiles::HasLine(File& file, const char* path, std::string_view value,
                             bool (*matches)(std::string_view line, std::string_view value)) {
    if (!file.text) {
        file.text = ReadReferenceFile(path);
    }
    if (!file.text) {
        return false;
    }
    const auto [answer, is_new] = file.answers.try_emplace(std::string(value));
    if (is_new) {
        answer->second = FindLine(*file.text, value, matches);
    }
    return answer->second;
}

bool ReferenceFiles::IsModelNumberInDatabase(std::string_view model) {
    return HasLine(models_, paths::kModels, model,
                   [](std::string_view line, std::string_view value) {
                       const size_t bar = line.find('|');
                       return !value.empty() && bar != std::string_view::npos &&
                              FieldIs(line.substr(bar + 1), value, "\n\r");
                   });
}

// A line without "|" is its own first field, line end included.
bool ReferenceFiles::IsOSTypeInDatabase(std::string_view type) {
    return HasLine(
        types_, paths::kOsTypes, type,
        [](std::string_view line, std::string_view value) { return FieldIs(line, value, "|"); });
}

bool ReferenceFiles::EventFileExists(std::string_view name) {
    const auto [answer, is_new] = event_files_.try_emplace(std::string(name));
    if (is_new) {
        answer->second = Exists(std::string(paths::kEventsDir) + '/' + std::string(name));
    }
    return answer->second;
}
