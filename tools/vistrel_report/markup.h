// Writes HTML and SVG. Names of elements and attributes can only be texts of this program's own source; text
// from outside has one way in, TextOf and AttributeText, and is escaped there. So a page cannot be opened by
// what a report holds.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// A text of the source: only a literal converts to it.
class Literal {
  public:
    // NOLINTNEXTLINE(google-explicit-constructor): literals are written as they are.
    consteval Literal(const char* text) : text_(text) {}
    constexpr std::string_view View() const { return text_; }

  private:
    std::string_view text_;
};

/// A document that only grows. Elements close in the order in which they must.
class Markup {
  public:
    /// Closes its element when it goes.
    class Element {
      public:
        ~Element() { markup_.Close(name_); }
        Element(const Element&) = delete;
        Element& operator=(const Element&) = delete;

      private:
        friend class Markup;
        Element(Markup& markup, std::string_view name) : markup_(markup), name_(name) {}
        Markup& markup_;
        std::string_view name_;
    };

    /// One attribute, which the constructor that is used says how to write.
    struct Attribute {
        Attribute(const Literal& attribute_name, const Literal& fixed)
            : name(attribute_name.View()), value(fixed.View()) {}
        Attribute(const Literal& attribute_name, double number);
        Attribute(const Literal& attribute_name, std::size_t number);
        /// From outside: escaped, and unseen characters made visible.
        static Attribute Text(const Literal& attribute_name, std::string_view outside);
        /// `prefix`, then a number, or two with `middle` between them: names for links within the page.
        static Attribute Numbered(const Literal& attribute_name, const Literal& prefix, std::size_t number);
        static Attribute Numbered(const Literal& attribute_name, const Literal& prefix, std::size_t first,
                                  const Literal& middle, std::size_t second);

        std::string_view name;
        std::string value;  ///< escaped already

      private:
        explicit Attribute(std::string_view attribute_name) : name(attribute_name) {}
    };
    using Attributes = std::vector<Attribute>;

    /// An element that is open until what is returned goes.
    [[nodiscard]] Element Open(const Literal& name, const Attributes& attributes = {});

    /// An element without content and without an end: <meta>, <br>; or in SVG one closed in itself.
    void Void(const Literal& name, const Attributes& attributes = {});
    void Shape(const Literal& name, const Attributes& attributes = {});

    /// An element that holds a text from outside, or a fixed one.
    void TextElement(const Literal& name, std::string_view outside, const Attributes& attributes = {});

    /// A text from outside: escaped, and unseen characters made visible.
    void TextOf(std::string_view outside);

    /// A part of the page that is written as it is: the style sheet and the document's first line.
    void Verbatim(const Literal& text) { text_ += text.View(); }

    /// What has been written so far; whole once every element has gone.
    const std::string& Text() const { return text_; }

  private:
    void Begin(std::string_view name, const Attributes& attributes);
    void Close(std::string_view name);

    std::string text_;
};

/// `outside` for a place between tags or within an attribute's quotes.
std::string EscapedText(std::string_view outside);

/// A number as SVG and tables want it: at most two digits after the point, and no zeros behind them.
std::string ShortNumber(double number);
