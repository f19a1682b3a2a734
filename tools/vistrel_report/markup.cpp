#include "tools/vistrel_report/markup.h"

#include <cmath>

#include "platform/format.h"
#include "tools/vistrel_report/visible_text.h"

Markup::Attribute::Attribute(const Literal& attribute_name, double number)
    : name(attribute_name.View()), value(ShortNumber(number)) {}

Markup::Attribute::Attribute(const Literal& attribute_name, std::size_t number)
    : name(attribute_name.View()), value(std::to_string(number)) {}

Markup::Attribute Markup::Attribute::Text(const Literal& attribute_name, std::string_view outside) {
    Attribute attribute(attribute_name.View());
    attribute.value = EscapedText(outside);
    return attribute;
}

Markup::Attribute Markup::Attribute::Numbered(const Literal& attribute_name, const Literal& prefix,
                                              std::size_t number) {
    Attribute attribute(attribute_name.View());
    attribute.value = std::string(prefix.View()) + std::to_string(number);
    return attribute;
}

Markup::Attribute Markup::Attribute::Numbered(const Literal& attribute_name, const Literal& prefix,
                                              std::size_t first, const Literal& middle, std::size_t second) {
    Attribute attribute = Numbered(attribute_name, prefix, first);
    attribute.value.append(middle.View()).append(std::to_string(second));
    return attribute;
}

Markup::Element Markup::Open(const Literal& name, const Attributes& attributes) {
    Begin(name.View(), attributes);
    text_ += '>';
    return {*this, name.View()};
}

void Markup::Void(const Literal& name, const Attributes& attributes) {
    Begin(name.View(), attributes);
    text_ += ">\n";
}

void Markup::Shape(const Literal& name, const Attributes& attributes) {
    Begin(name.View(), attributes);
    text_ += "/>\n";
}

void Markup::TextElement(const Literal& name, std::string_view outside, const Attributes& attributes) {
    const Element element = Open(name, attributes);
    TextOf(outside);
}

void Markup::TextOf(std::string_view outside) {
    text_ += EscapedText(outside);
}

void Markup::Begin(std::string_view name, const Attributes& attributes) {
    text_ += '<';
    text_ += name;
    for (const Attribute& attribute : attributes) {
        text_.append(" ").append(attribute.name).append("=\"").append(attribute.value).append("\"");
    }
}

void Markup::Close(std::string_view name) {
    text_.append("</").append(name).append(">");
    if (name != "span" && name != "a" && name != "code" && name != "b") {
        text_ += '\n';
    }
}

std::string EscapedText(std::string_view outside) {
    std::string escaped;
    const std::string visible = VisibleText(outside);
    escaped.reserve(visible.size());
    for (const char character : visible) {
        switch (character) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            case '\'':
                escaped += "&#39;";
                break;
            default:
                escaped += character;
        }
    }
    return escaped;
}

std::string ShortNumber(double number) {
    if (!std::isfinite(number)) {
        return "0";
    }
    std::string text = FormatText("%.2f", number);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') {
        text.pop_back();
    }
    return text == "-0" ? "0" : text;
}
