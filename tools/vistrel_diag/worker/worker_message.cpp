#include "tools/vistrel_diag/worker/worker_message.h"

#include <nlohmann/json.hpp>

WorkerMessage& WorkerMessage::SetText(std::string_view name, std::string_view value) {
    values_[std::string(name)] = std::string(value);
    return *this;
}

WorkerMessage& WorkerMessage::SetInteger(std::string_view name, std::int64_t value) {
    values_[std::string(name)] = value;
    return *this;
}

WorkerMessage& WorkerMessage::SetNumber(std::string_view name, double value) {
    values_[std::string(name)] = value;
    return *this;
}

WorkerMessage& WorkerMessage::SetTruth(std::string_view name, bool value) {
    values_[std::string(name)] = value;
    return *this;
}

template <typename Type>
std::optional<Type> WorkerMessage::Get(std::string_view name) const {
    const auto found = values_.find(name);
    const Type* const value = found != values_.end() ? std::get_if<Type>(&found->second) : nullptr;
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

std::optional<std::string> WorkerMessage::Text(std::string_view name) const {
    return Get<std::string>(name);
}

std::optional<std::int64_t> WorkerMessage::Integer(std::string_view name) const {
    return Get<std::int64_t>(name);
}

std::optional<double> WorkerMessage::Number(std::string_view name) const {
    return Get<double>(name);
}

bool WorkerMessage::Truth(std::string_view name) const {
    return Get<bool>(name).value_or(false);
}

std::string WorkerMessage::ToLine() const {
    nlohmann::json object = nlohmann::json::object();
    for (const auto& [name, value] : values_) {
        std::visit([&object, &key = name](const auto& plain) { object[key] = plain; }, value);
    }
    return object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

std::optional<WorkerMessage> WorkerMessage::FromLine(std::string_view line) {
    const nlohmann::json object = nlohmann::json::parse(line, nullptr, /*allow_exceptions=*/false);
    if (!object.is_object()) {
        return std::nullopt;
    }
    WorkerMessage message;
    for (const auto& [name, value] : object.items()) {
        if (value.is_boolean()) {
            message.SetTruth(name, value.get<bool>());
        } else if (value.is_number_integer()) {
            message.SetInteger(name, value.get<std::int64_t>());
        } else if (value.is_number_float()) {
            message.SetNumber(name, value.get<double>());
        } else if (value.is_string()) {
            message.SetText(name, value.get_ref<const std::string&>());
        }
    }
    return message;
}
