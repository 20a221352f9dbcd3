#include <Ferrolog/detail/Complaint.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <unistd.h>

namespace Ferrolog::detail {

namespace {

// Always ended by a zero byte.
class Line {
public:
    constexpr Line() = default;

    void add(const Piece& piece) {
        if (!piece.isNumber()) {
            addHarmless(piece.text());
            return;
        }
        char digits[10];
        const char* const end = std::to_chars(digits, digits + sizeof digits, piece.number()).ptr;
        addHarmless({digits, static_cast<std::size_t>(end - digits)});
    }

    const char* text() const { return text_.data(); }

    void print() {
        text_[length_] = '\n'; // in place of the end mark
        ssize_t written = 0;
        do {
            written = ::write(STDERR_FILENO, text_.data(), length_ + 1);
        } while (written < 0 && errno == EINTR); // any other failure has nobody to be told to
        text_[length_] = '\0';
    }

private:
    void addHarmless(std::string_view text) {
        constexpr char digits[] = "0123456789abcdef";
        for (const char c : text) {
            const auto byte = static_cast<U8>(c);
            if (byte >= 0x20 && byte != 0x7F) {
                add(c);
            } else {
                add('\\');
                add('x');
                add(digits[byte >> 4]);
                add(digits[byte & 15]);
            }
        }
    }

    void add(char c) {
        if (length_ + 1 < text_.size()) {
            text_[length_] = c;
            ++length_;
        }
    }

    std::array<char, 512> text_{};
    std::size_t length_ = 0;
};

// The one that readers are given, and the one that the next complaint goes into.
constinit std::array<Line, 2> kept{};
constinit std::atomic<U32> newest = 0;
constinit std::atomic_flag keeping{};

void keep(const Line& line) {
    if (keeping.test_and_set())
        return; // the complaint that we interrupted, or that another thread has at this moment
    const U32 next = 1 - newest;
    kept[next] = line;
    newest = next;
    keeping.clear();
}

} // namespace

void complain(std::initializer_list<Piece> pieces) {
    const int savedErrno = errno;
    Line line;
    line.add("Ferrolog: ");
    for (const Piece& piece : pieces) line.add(piece);
    keep(line);
    line.print();
    errno = savedErrno;
}

const char* lastComplaint() { return kept[newest].text(); }

void forgetComplainers() { keeping.clear(); }

const char* textOfError(int error) {
    const char* const text = ::strerrordesc_np(error);
    return text == nullptr ? "unknown error" : text;
}

} // namespace Ferrolog::detail
