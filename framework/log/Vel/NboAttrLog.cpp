#include <Vel/NboAttrLog.h>

#include <Vel/Assert.h>
#include <Vel/Exception.h>
#include <Vel/format.h>
#include <algorithm>
#include <cstring>

namespace Vel {

namespace {

constexpr std::size_t bufferSize = std::size_t{64} << 10;
static_assert(NboAttrLog::lengthSize + NboAttrLog::fixedMax <= bufferSize);

[[noreturn]] void throwBroken(const String8& text) {
    throw Exception(text, Exception::Id::connection);
}

} // namespace

NboAttrLog::Out::Out(const Ptr<ByteConnection::Out>& connection) : connection_(connection) {
    capacityIs(bufferSize);
}

NboAttrLog::Out::~Out() {
    try {
        flush();
    } catch (...) { // a destructor has nobody to tell
    }
    delete[] buffer_;
}

// Moves what is written so far into a buffer of `capacity`.
void NboAttrLog::Out::capacityIs(std::size_t capacity) {
    auto* const buffer = new U8[capacity];
    const std::size_t used = offset();
    if (used != 0) std::memcpy(buffer, buffer_, used);
    delete[] buffer_;
    buffer_ = buffer;
    pos_ = buffer_ + used;
    limit_ = pos_;
    end_ = buffer_ + capacity;
    flushMark_ = buffer_ + bufferSize - lengthSize;
    takeMark_ = depth_ == 0 ? flushMark_ : buffer_;
}

void NboAttrLog::Out::makeRoom(std::size_t size) {
    VEL_ASSERT(depth_ > 0, size);
    const std::size_t used = offset();
    const std::size_t length = used - recordOffset_ - lengthSize;
    if (length > payloadMax || size > payloadMax - length) tooLong();
    capacityIs(std::max(used + size, 2 * used));
    limit_ = end_;
}

void NboAttrLog::Out::tooLong() {
    throwBroken(format("attribute log record would be longer than %zu bytes", payloadMax));
}

void NboAttrLog::Out::writeString8(const String8& value) {
    writeU32(static_cast<U32>(value.length()));
    writeBytes({reinterpret_cast<const U8*>(value.charPtr()), value.length()});
}

void NboAttrLog::Out::writeBytes(std::span<const U8> bytes) {
    if (limit_ - pos_ < static_cast<std::ptrdiff_t>(bytes.size())) makeRoom(bytes.size());
    if (!bytes.empty()) std::memcpy(pos_, bytes.data(), bytes.size());
    pos_ += bytes.size();
}

void NboAttrLog::Out::flush() {
    VEL_ASSERT(depth_ == 0, depth_);
    if (offset() == 0) return;
    connection_->write({buffer_, offset()});
    pos_ = buffer_;
    limit_ = pos_;
    // A long record made the buffer grow; the next one is short as a rule.
    if (end_ - buffer_ > static_cast<std::ptrdiff_t>(bufferSize)) capacityIs(bufferSize);
}

NboAttrLog::In::In(const Ptr<ByteConnection::In>& connection)
    : connection_(connection), buffer_(new U8[bufferSize]), capacity_(bufferSize), pos_(buffer_),
      limit_(pos_), end_(pos_), record_(pos_) {}

NboAttrLog::In::~In() { delete[] buffer_; }

bool NboAttrLog::In::nothingLeft() {
    VEL_ASSERT(depth_ == 0, depth_);
    return buffered() == 0 && !readMore(lengthSize);
}

String8 NboAttrLog::In::nextString8() {
    const std::span<const U8> bytes = nextBytes(nextU32());
    return String8(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

std::span<const U8> NboAttrLog::In::nextBytes(std::size_t size) {
    if (remaining() < size) tooShort(size);
    return {std::exchange(pos_, pos_ + size), size};
}

void NboAttrLog::In::fetch(std::size_t size) {
    if (size - lengthSize > payloadMax)
        throwBroken(format("attribute log record at byte %llu is malformed: its length of %zu is "
                           "more than %zu",
                           place(pos_), size - lengthSize, payloadMax));
    while (buffered() < size) {
        if (readMore(size)) continue;
        if (buffered() == 0)
            throwBroken(format("attribute log ends at byte %llu: no record follows", place(end_)));
        throwBroken(format("attribute log ends at byte %llu, inside the record at byte %llu",
                           place(end_), place(pos_)));
    }
}

bool NboAttrLog::In::readMore(std::size_t wanted) {
    const std::size_t held = buffered();
    const U64 heldPlace = place(pos_);
    // The buffer grows as bytes arrive, not because a length announces them.
    if (held == capacity_) {
        const std::size_t capacity = std::min(2 * capacity_, std::max(wanted, capacity_ + 1));
        auto* const larger = new U8[capacity];
        std::memcpy(larger, pos_, held);
        delete[] buffer_;
        buffer_ = larger;
        capacity_ = capacity;
    } else if (held != 0) {
        std::memmove(buffer_, pos_, held);
    }
    bufferPlace_ = heldPlace;
    pos_ = limit_ = record_ = buffer_;
    end_ = pos_ + held;
    const std::size_t came = connection_->read({buffer_ + held, capacity_ - held});
    end_ += came;
    return came != 0;
}

U64 NboAttrLog::In::place(const U8* byte) const noexcept {
    return bufferPlace_ + static_cast<U64>(byte - buffer_);
}

void NboAttrLog::In::malformed(const String8& reason) const {
    throwBroken(format("attribute log record at byte %llu is malformed: %s", place(record_),
                       reason.charPtr()));
}

void NboAttrLog::In::tooShort(std::size_t wanted) const {
    VEL_ASSERT(depth_ > 0, wanted);
    malformed(format("a field of %zu bytes is read where %zu are left", wanted, remaining()));
}

void NboAttrLog::In::noTruthValue(U8 byte) const {
    malformed(format("%u is no truth value", unsigned{byte}));
}

void NboAttrLog::In::leftOver() const { malformed(format("%zu bytes are left over", remaining())); }

} // namespace Vel
