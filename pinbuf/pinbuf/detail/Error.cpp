#include <pinbuf/detail/Error.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <sys/uio.h>
#include <system_error>
#include <unistd.h>

namespace pinbuf {
namespace {

constexpr std::size_t lineBytes = 1023;
constexpr std::size_t shownNameBytes = 127;
constexpr std::string_view cutMark = "...";

using LineBuffer = std::array<char, lineBytes + 1>;
constinit thread_local LineBuffer lastLine{};

bool needsEscape(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f || c == '"' || c == '\\';
}

// Hands `text`, quoted, to `put` piece by piece.
template <typename Put>
void quoteInto(std::string_view text, Put put) {
    constexpr std::string_view digits = "0123456789abcdef";
    put("\"");
    for (const char& c : text) {
        if (needsEscape(c)) {
            const auto byte = static_cast<unsigned char>(c);
            const std::array<char, 4> escape{'\\', 'x', digits[byte >> 4U], digits[byte & 0xfU]};
            put(std::string_view(escape.data(), escape.size()));
        } else {
            put(std::string_view(&c, 1));
        }
    }
    put("\"");
}

// Fills a buffer from the left; once a piece does not fit, the line ends in the cut mark and takes
// no more.
class Line {
public:
    explicit Line(LineBuffer& buffer) : buffer_(buffer) {}

    void put(std::string_view text) {
        if (isCut_) return;
        if (text.size() > lineBytes - cutMark.size() - used_) {
            isCut_ = true;
            text = cutMark;
        }
        std::memcpy(buffer_.data() + used_, text.data(), text.size());
        used_ += text.size();
    }

    // Piece by piece, so that a long text fills the line before it is cut.
    void putEach(std::string_view text) {
        for (const char& c : text) put(std::string_view(&c, 1));
    }

    // Ends the text and writes it with a line feed, by one system call, so that lines of several
    // processes do not mix. There is nobody to tell when that fails.
    void finish() {
        buffer_[used_] = '\0';
        char lineFeed = '\n';
        const std::array<iovec, 2> parts{{{buffer_.data(), used_}, {&lineFeed, 1}}};
        [[maybe_unused]] const auto written =
            ::writev(STDERR_FILENO, parts.data(), static_cast<int>(parts.size()));
    }

private:
    LineBuffer& buffer_;
    std::size_t used_ = 0;
    bool isCut_ = false;
};

} // namespace

Failure::Failure(std::string what, int errorNumber)
    : reason_(std::move(what) + ": " + std::generic_category().message(errorNumber)) {}

std::string inQuotes(std::string_view text) {
    std::string result;
    quoteInto(text, [&result](std::string_view piece) { result += piece; });
    return result;
}

void report(std::string_view call, const char* name, std::string_view reason) noexcept {
    Line line(lastLine);
    line.putEach(call);
    if (name != nullptr) {
        const std::size_t nameBytes = ::strnlen(name, shownNameBytes + 1);
        line.putEach(": region ");
        quoteInto(std::string_view(name, std::min(nameBytes, shownNameBytes)),
                  [&line](std::string_view piece) { line.put(piece); });
        if (nameBytes > shownNameBytes) line.putEach(cutMark);
    }
    line.putEach(": ");
    line.putEach(reason);
    line.finish();
}

void notice(std::string_view text) noexcept {
    LineBuffer buffer;
    Line line(buffer);
    line.putEach("pinbuf: ");
    line.putEach(text);
    line.finish();
}

const char* lastError() noexcept { return lastLine.data(); }

void clearError() noexcept { lastLine[0] = '\0'; }

} // namespace pinbuf
