#ifndef RT305_HOST_MEASURING_TEXT_READER_H
#define RT305_HOST_MEASURING_TEXT_READER_H

#include <string>
#include <string_view>

namespace rt305 {

/// Reads a JSON text of the library from left to right, without a tree of its values. Each function reads what comes
/// next, and fails with the place when that is something else. Strings have no escapes: the library writes none.
class TextReader {
public:
    explicit TextReader(std::string_view text) : text_(text) {}

    std::string_view string();
    double number();  // NaN for null

    /// Reads a value of any kind and drops it.
    void skip();

    /// Calls member(name) for each member of an object; it must read the value.
    template <class Member>
    void object(Member member) {
        list('{', '}', [&] {
            const std::string_view name = string();
            expect(':');
            member(name);
        });
    }

    /// Calls element() for each element of an array; it must read it. Null is an empty array.
    template <class Element>
    void array(Element element) {
        if (next() == 'n') {
            number();
        } else {
            list('[', ']', element);
        }
    }

    /// Fails unless the text ends here.
    void end();

private:
    [[noreturn]] void fail() const;
    char next() const { return at_ < text_.size() ? text_[at_] : '\0'; }

    void expect(char c) {
        if (next() != c) {
            fail();
        }
        ++at_;
    }

    template <class Item>
    void list(char open, char close, Item item) {
        expect(open);
        if (next() == close) {
            ++at_;
            return;
        }
        for (;;) {
            item();
            if (next() != ',') {
                return expect(close);
            }
            ++at_;
        }
    }

    std::string_view text_;
    std::size_t at_ = 0;
};

}  // namespace rt305

#endif
