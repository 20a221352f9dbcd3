#include <Vel/traceHelper.h>

#include <locale>

namespace Vel::detail {

TraceLine::TraceLine() : out_(this) {
    out_.imbue(std::locale::classic());
    setp(first_, first_ + sizeof(first_));
}

TraceLine::~TraceLine() = default;

TraceLine::int_type TraceLine::overflow(int_type c) {
    const std::string_view soFar = text();
    const std::size_t length = soFar.size();
    if (grown_.empty()) grown_ = soFar;
    grown_.resize(2 * length);
    setp(grown_.data(), grown_.data() + grown_.size());
    pbump(static_cast<int>(length));
    return sputc(static_cast<char>(c));
}

} // namespace Vel::detail
