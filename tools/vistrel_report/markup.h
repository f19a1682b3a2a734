// Writes HTML and SVG. Names of elements and attributes can only be literals of this program's source. Text
// from outside is accepted in a few functions only, and is escaped there. So the contents of a report cannot
// add markup to a page.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// A text of the source code: only a literal converts to it.
class Literal {
  public:
    // NOLINTNEXTLINE(google-explicit-constructor): literals are written as they are.
    consteval Literal(const char* text) : text_(text) {}
    constexpr std::string_view View() const { return text_; }

  private:
    std::string_view text_;
};

/// A document that is written from beginning to end. Elements are closed in the right order.
class Markup {
  public:
    /// An open element; the destructor closes it.
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

    /// One attribute. The constructor decides how its value is written.
    struct Attribute {
        Attribute(const Literal& attribute_name, const Literal& fixed)
            : name(attribute_name.View()), value(fixed.View()) {}
        Attribute(const Literal& attribute_name, double number);
        Attribute(const Literal& attribute_name, std::size_t number);
        /// A text from outside: escaped, and invisible characters made visible.
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

    /// Opens an element; it stays open until the returned object is destroyed.
    [[nodiscard]] Element Open(const Literal& name, const Attributes& attributes = {});

    /// Write an element without content and without an end tag (Void: <meta>, <br>), or one of SVG that is
    /// self-closing (Shape).
    void Void(const Literal& name, const Attributes& attributes = {});
    void Shape(const Literal& name, const Attributes& attributes = {});

    /// Writes an element that contains a text, from outside or fixed.
    void TextElement(const Literal& name, std::string_view outside, const Attributes& attributes = {});

    /// A text from outside: escaped, and invisible characters made visible.
    void TextOf(std::string_view outside);

    /// A part of the page that is written unchanged: the style sheet and the document's first line.
    void Verbatim(const Literal& text) { text_ += text.View(); }

    /// The text written so far; complete when every element is closed.
    const std::string& Text() const { return text_; }

  private:
    void Begin(std::string_view name, const Attributes& attributes);
    void Close(std::string_view name);

    std::string text_;
};

/// Escapes `outside` for use between tags or within an attribute's quotes.
std::string EscapedText(std::string_view outside);

/// A number for SVG and tables: at most two digits after the point, without trailing zeros.
std::string ShortNumber(double number);
