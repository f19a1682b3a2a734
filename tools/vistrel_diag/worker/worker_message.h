// A message between the tool and its worker process: named values, one JSON object per line.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

class WorkerMessage {
  public:
    WorkerMessage& SetText(std::string_view name, std::string_view value);
    WorkerMessage& SetInteger(std::string_view name, std::int64_t value);
    WorkerMessage& SetNumber(std::string_view name, double value);
    WorkerMessage& SetTruth(std::string_view name, bool value);

    /// The value of that name; nothing when there is none, or when it has another type.
    std::optional<std::string> Text(std::string_view name) const;
    std::optional<std::int64_t> Integer(std::string_view name) const;
    std::optional<double> Number(std::string_view name) const;
    /// False when there is no such value.
    bool Truth(std::string_view name) const;

    /// One line with its line feed. A finite number is read back bit for bit; a number that is not finite is
    /// read back as no value. Bytes of a text that are not UTF-8 are read back as U+FFFD.
    std::string ToLine() const;

    /// Nothing when `line` is not a message.
    static std::optional<WorkerMessage> FromLine(std::string_view line);

  private:
    using Value = std::variant<bool, std::int64_t, double, std::string>;

    template <typename Type>
    std::optional<Type> Get(std::string_view name) const;

    std::map<std::string, Value, std::less<>> values_;
};
