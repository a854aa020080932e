// How a step ends: fine, or with the exit code and the message of its failure. The step that fails
// makes the message, its callers hand the outcome upwards as it is:
//
//     if (Outcome outcome = CheckPort(port); !outcome.ok()) {
//         return outcome;
//     }
//
// What a step finds it returns, as a Result. A lookup that its callers may pass over returns null
// or an empty optional instead, and no message is made.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "base/exit_code.h"

class [[nodiscard]] Outcome {
  public:
    // Fine.
    Outcome() = default;
    // A failure; the message may be empty.
    Outcome(ExitCode code, std::string message) : code_(code), message_(std::move(message)) {}

    [[nodiscard]] bool ok() const { return code_ == ExitCode::kOk; }
    ExitCode code() const { return code_; }
    [[nodiscard]] const std::string& message() const { return message_; }

    // For a message that describes a place in a file in a form of its own: the place as compilers
    // write it ("map.xml:3"), and the cause alone. Without a place the cause is what standard error
    // says in place of the message, which the log gets.
    struct Cause {
        std::string place;
        std::string text;
    };
    Outcome WithCause(Cause cause) && {
        cause_ = std::move(cause);
        return std::move(*this);
    }
    [[nodiscard]] const std::optional<Cause>& cause() const { return cause_; }

  private:
    ExitCode code_ = ExitCode::kOk;
    std::string message_;
    std::optional<Cause> cause_;
};

// A failure whose message is formatted like printf and cut to kLongestMessage bytes:
//     return Failure(ExitCode::kCannotOpen, "Cannot open \"%s\".", path);
inline constexpr size_t kLongestMessage = 8191;
[[gnu::format(printf, 2, 3)]] Outcome Failure(ExitCode code, const char* format, ...);

// A failure with the system's text for the present errno as the whole message.
Outcome SystemFailure(ExitCode code);

// What a step found, or how it failed. The value may be looked at only when the outcome is fine.
template <typename T>
class [[nodiscard]] Result {
  public:
    Result(T value) : value_(std::move(value)) {}
    // A failure.
    Result(Outcome outcome) : outcome_(std::move(outcome)) {}

    [[nodiscard]] bool ok() const { return outcome_.ok(); }
    const Outcome& outcome() const { return outcome_; }
    T& operator*() { return *value_; }
    const T& operator*() const { return *value_; }
    T* operator->() { return &*value_; }
    const T* operator->() const { return &*value_; }

  private:
    std::optional<T> value_;
    Outcome outcome_;
};
