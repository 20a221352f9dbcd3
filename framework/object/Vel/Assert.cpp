#include <Vel/Assert.h>

#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace Vel::detail {

// The line under construction, in memory of its own: a failed assertion may not allocate. A text
// too long for it is cut, the line end is not.
class AssertionLine {
public:
    void add(const char* text) noexcept { add(text, std::strlen(text)); }

    void add(const char* text, std::size_t length) noexcept {
        const std::size_t room = sizeof(buffer_) - 1 - length_;
        const std::size_t taken = length < room ? length : room;
        std::memcpy(buffer_ + length_, text, taken);
        length_ += taken;
    }

    void addNumber(U64 value, unsigned base) noexcept {
        char digits[20];
        char* first = digits + sizeof(digits);
        do {
            *--first = "0123456789abcdef"[value % base];
            value /= base;
        } while (value != 0);
        add(first, static_cast<std::size_t>(digits + sizeof(digits) - first));
    }

    void add(const AssertedValue& value) noexcept {
        switch (value.kind_) {
        case AssertedValue::Kind::boolean: add(value.bits_ != 0 ? "true" : "false"); break;
        case AssertedValue::Kind::unsignedInteger: addNumber(value.bits_, 10); break;
        case AssertedValue::Kind::signedInteger:
            if (static_cast<S64>(value.bits_) < 0) add("-");
            addNumber(static_cast<S64>(value.bits_) < 0 ? 0 - value.bits_ : value.bits_, 10);
            break;
        case AssertedValue::Kind::text: add(value.text_ != nullptr ? value.text_ : "null"); break;
        case AssertedValue::Kind::pointer:
            if (value.address_ == nullptr) {
                add("null");
            } else {
                add("0x");
                addNumber(reinterpret_cast<std::uintptr_t>(value.address_), 16);
            }
            break;
        }
    }

    void print() noexcept {
        buffer_[length_++] = '\n';
        const char* rest = buffer_;
        while (length_ > 0) {
            const ssize_t written = ::write(STDERR_FILENO, rest, length_);
            if (written <= 0) return;
            rest += written;
            length_ -= static_cast<std::size_t>(written);
        }
    }

private:
    char buffer_[2048];
    std::size_t length_ = 0;
};

namespace {

// The end of the first name in a list: the first comma outside parentheses, brackets and braces, or
// the end.
const char* endOfName(const char* names) noexcept {
    int depth = 0;
    for (; *names != '\0'; ++names) {
        if (std::strchr("([{", *names) != nullptr)
            ++depth;
        else if (std::strchr(")]}", *names) != nullptr)
            --depth;
        else if (*names == ',' && depth == 0)
            break;
    }
    return names;
}

} // namespace

void assertionFailed(const char* text, const char* file, int line, const char* function,
                     const char* names, std::initializer_list<AssertedValue> values) noexcept {
    AssertionLine out;
    out.add(file);
    out.add(":");
    out.addNumber(static_cast<U64>(line), 10);
    out.add(": assertion failed: ");
    out.add(text);
    const char* separator = "; ";
    for (const AssertedValue& value : values) {
        while (*names == ' ') ++names;
        const char* end = endOfName(names);
        out.add(separator);
        out.add(names, static_cast<std::size_t>(end - names));
        out.add(" = ");
        out.add(value);
        separator = ", ";
        names = *end == ',' ? end + 1 : end;
    }
    out.add(" (in ");
    out.add(function);
    out.add(")");
    out.print();
    std::abort();
}

} // namespace Vel::detail
