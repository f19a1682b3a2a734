// What the tool and its worker process tell each other: named values, one JSON object a line.
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

    /// The value of that name; nothing when there is none, or one of another kind.
    std::optional<std::string> Text(std::string_view name) const;
    std::optional<std::int64_t> Integer(std::string_view name) const;
    std::optional<double> Number(std::string_view name) const;
    /// False when there is no such value.
    bool Truth(std::string_view name) const;

    /// One line with its line feed. A number comes back bit for bit, one that is not finite as none. Bytes of
    /// a text that are not UTF-8 come back as U+FFFD.
    std::string ToLine() const;

    /// Nothing when `line` is not such a line.
    static std::optional<WorkerMessage> FromLine(std::string_view line);

  private:
    using Value = std::variant<bool, std::int64_t, double, std::string>;

    template <typename Type>
    std::optional<Type> Get(std::string_view name) const;

    std::map<std::string, Value, std::less<>> values_;
};
