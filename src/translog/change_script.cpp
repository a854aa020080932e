#include "translog/change_script.h"

#include <algorithm>

#include "base/arena.h"
#include "base/text.h"

namespace {

bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Whether a shell takes what stands before "=" for the name of a variable.
bool IsVariable(std::string_view name) {
    return !name.empty() && !IsDigit(name[0]) && std::ranges::all_of(name, [](char c) {
        return IsDigit(c) || c == '_' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    });
}

// The line that the log has behind each command, for who reads the output of a replay.
bool IsEcho(std::string_view line) {
    static constexpr std::string_view kFront = "echo \"Recorded Exit Code = ";
    static constexpr std::string_view kBack = ", This Exit Code = $?\"";
    if (line.size() <= kFront.size() + kBack.size() || !line.starts_with(kFront) ||
        !line.ends_with(kBack)) {
        return false;
    }
    line.remove_prefix(kFront.size());
    line.remove_suffix(kBack.size());
    return std::ranges::all_of(line, IsDigit);
}

// A word as the shell would hand it over.
struct Word {
    std::string text;
    std::string plain;       // with kQuoted in place of each quoted part
    bool is_quoted = false;  // some of it
    static constexpr char kQuoted = '"';
};

// Whether some shells make several words of this one, {a,b} or {1..3}.
bool HasBraces(std::string_view plain) {
    const size_t open = plain.find('{');
    const size_t parts = std::min(plain.find(',', open), plain.find("..", open));
    return open != std::string_view::npos && plain.find('}', parts) != std::string_view::npos;
}

class Reader {
  public:
    explicit Reader(std::string_view text) : text_(text) {}

    ChangeScript Read() {
        while (!text_.empty()) {
            std::string_view rest = text_;
            std::string_view line = TakeLine(rest);
            line.remove_suffix(line.ends_with('\n') ? 1 : 0);
            if (IsEcho(line)) {
                text_ = rest;
                ++line_;
            } else {
                ReadCommand();
            }
        }
        return std::move(script_);
    }

  private:
    void Refuse(std::string text) { Refuse(first_line_, std::move(text)); }
    void Refuse(size_t line, std::string text) {
        if (!is_refused_) {
            script_.faults.push_back({line, std::move(text)});
        }
        is_refused_ = true;
    }

    // What is left, with nothing before it but the end of a line that goes on.
    std::string_view Rest() {
        while (text_.starts_with("\\\n")) {
            text_.remove_prefix(2);
            ++line_;
        }
        return text_;
    }
    [[nodiscard]] bool IsAt(char c) { return Rest().starts_with(c); }
    char Take() {
        const char c = text_.front();
        text_.remove_prefix(1);
        line_ += c == '\n' ? 1 : 0;
        return c;
    }
    void SkipBlanks() {
        while (!Rest().empty() && IsBlank(text_.front())) {
            Take();
        }
    }

    // A line with all that belongs to it.
    void ReadCommand() {
        words_.clear();
        delimiter_.reset();
        is_refused_ = false;
        for (SkipBlanks(); !Rest().empty() && !IsAt('\n'); SkipBlanks()) {
            if (IsAt('#')) {
                text_.remove_prefix(std::min(text_.find('\n'), text_.size()));
            } else if (IsAt('<')) {
                first_line_ = words_.empty() ? line_ : first_line_;
                ReadRedirection();
            } else {
                first_line_ = words_.empty() ? line_ : first_line_;
                words_.push_back(ReadWord());
            }
        }
        if (!text_.empty()) {
            Take();
        }
        std::string input;
        if (delimiter_) {
            ReadHereDocument(input);
        }
        if (!words_.empty()) {
            Keep(input);
        } else if (delimiter_) {
            Refuse("no tqsmgr command");
        }
    }

    Word ReadWord() {
        static constexpr std::string_view kEnds = " \t\n<";
        static constexpr std::string_view kNotPlain = "$`*?[~|&;()>";
        Word word;
        while (!Rest().empty() && kEnds.find(text_.front()) == std::string_view::npos) {
            const char c = Take();
            const bool is_quote = c == '\'' || c == '"' || c == '\\';
            word.plain += is_quote ? Word::kQuoted : c;
            word.is_quoted = word.is_quoted || is_quote;
            if (c == '\'') {
                ReadSingleQuoted(word);
            } else if (c == '"') {
                ReadDoubleQuoted(word);
            } else if (c == '\\' && text_.empty()) {
                Refuse("a backslash at the end");
            } else if (c == '\\') {
                word.text += Take();
            } else {
                if (c == '\r') {
                    Refuse("a carriage return outside quotes");
                } else if (kNotPlain.find(c) != std::string_view::npos) {
                    Refuse(std::string("\"") + c + "\" outside quotes");
                }
                word.text += c;
            }
        }
        if (HasBraces(word.plain)) {
            Refuse("\"{\" outside quotes");
        }
        const bool names_descriptor =
            word.text.ends_with('}') || std::ranges::all_of(word.text, IsDigit);
        if (!word.is_quoted && names_descriptor && IsAt('<')) {
            Refuse("\"<\" for a descriptor");
        }
        return word;
    }

    void ReadSingleQuoted(Word& word) {
        while (!text_.empty() && text_.front() != '\'') {
            word.text += Take();
        }
        EndQuote();
    }

    void ReadDoubleQuoted(Word& word) {
        while (!Rest().empty() && text_.front() != '"') {
            word.text += TakeEscaped("\"", first_line_);
        }
        EndQuote();
    }

    void EndQuote() {
        if (text_.empty()) {
            Refuse("an open quote");
        } else {
            Take();
        }
    }

    // The next character where a shell would expand: what the backslash before it protects, which
    // "also" tells of besides the usual three, stands for itself.
    char TakeEscaped(std::string_view also, size_t line) {
        const char c = Take();
        const bool protects =
            c == '\\' && !text_.empty() &&
            (std::string_view("$`\\").find(text_.front()) != std::string_view::npos ||
             also.find(text_.front()) != std::string_view::npos);
        if (c == '$' || c == '`') {
            Refuse(line, std::string("\"") + c + "\" without a backslash");
        }
        return protects ? Take() : c;
    }

    void ReadRedirection() {
        Take();
        const bool is_here_document = IsAt('<');
        if (is_here_document) {
            Take();
        }
        if (!is_here_document || IsAt('<')) {
            Refuse("\"<\" that begins no here-document");
            return;
        }
        if (IsAt('-')) {
            Refuse("a here-document with \"<<-\"");
            Take();
        }
        SkipBlanks();
        const Word word = ReadWord();
        if (word.plain.empty()) {
            Refuse("a here-document without a delimiter");
            return;
        }
        if (delimiter_) {
            Refuse("a second here-document");
        }
        delimiter_ = word;
    }

    // The lines up to the delimiter, which stands alone in one. What a backslash joins is one line.
    void ReadHereDocument(std::string& input) {
        size_t begin = 0;
        for (bool is_start = true; !text_.empty();) {
            std::string_view rest = text_;
            std::string_view line = TakeLine(rest);
            line.remove_suffix(line.ends_with('\n') ? 1 : 0);
            if (is_start && line == delimiter_->text) {
                text_ = rest;
                ++line_;
                return;
            }
            begin = is_start ? input.size() : begin;
            is_start = ReadLine(input);
            const size_t size = delimiter_->text.size();
            if (!is_start && input.substr(begin, size)
                                 .append(text_.substr(0, size))
                                 .starts_with(delimiter_->text)) {
                // Shells differ in whether that is the end.
                Refuse(line_ - 1, "lines that make the delimiter together");
            }
        }
        Refuse("a here-document without its end");
    }

    // A line of it; false when the next one goes on with it.
    bool ReadLine(std::string& input) {
        while (!text_.empty()) {
            if (!delimiter_->is_quoted && text_.starts_with("\\\n")) {
                Rest();
                return false;
            }
            const char c = delimiter_->is_quoted ? Take() : TakeEscaped("", line_);
            input += c;
            if (c == '\n') {
                return true;
            }
        }
        return true;
    }

    void Keep(const std::string& input) {
        const Word& program = words_.front();
        const size_t equals = program.text.find('=');
        if (equals < program.plain.find(Word::kQuoted) &&
            IsVariable(program.text.substr(0, equals))) {
            Refuse("an assignment");
        }
        if (program.text.substr(program.text.rfind('/') + 1) != "tqsmgr") {
            Refuse("no tqsmgr command");
        }
        if (is_refused_) {
            return;
        }
        auto* kept = static_cast<const char**>(arena::Allocate(words_.size() * sizeof(char*)));
        std::ranges::transform(words_, kept,
                               [](const Word& word) { return arena::Copy(word.text); });
        ScriptCommand command{first_line_, {kept, words_.size()}, {}};
        if (delimiter_) {
            command.input = std::string_view(arena::Copy(input), input.size());
        }
        script_.commands.push_back(command);
    }

    std::string_view text_;
    size_t line_ = 1;
    ChangeScript script_;
    // Of the present command.
    size_t first_line_ = 1;
    std::vector<Word> words_;
    std::optional<Word> delimiter_;
    bool is_refused_ = false;
};

}  // namespace

ChangeScript ReadChangeScript(std::string_view text) {
    const size_t zero = text.find('\0');
    if (zero != std::string_view::npos) {
        const auto lines = std::ranges::count(text.substr(0, zero), '\n');
        return {{}, {{static_cast<size_t>(lines) + 1, "a zero byte"}}};
    }
    return Reader(text).Read();
}
