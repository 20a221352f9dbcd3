#include <Vel/textErrors.h>

#include <Vel/detail/typeName.h>
#include <Vel/format.h>
#include <Vel/textReading.h>
#include <Vel/textWriting.h>

namespace Vel {

namespace {

// What stands between two places, fit for a message.
String8 excerpt(std::string_view text) {
    constexpr std::size_t mostBytes = 24;
    String8 quoted("\"");
    for (const char c : text.substr(0, mostBytes)) {
        char buffer[4];
        const bool plain = c >= ' ' && c <= '~' && c != '"' && c != '\\';
        char* stop = plain      ? Text::writePlain(buffer, {&c, 1})
                     : c == '"' ? Text::writePlain(buffer, "\\\"")
                                : Text::detail::writeEscape(buffer, static_cast<U8>(c));
        quoted.append({buffer, static_cast<std::size_t>(stop - buffer)});
    }
    return quoted += text.size() > mostBytes ? "\"..." : "\"";
}

std::string_view between(const String8::IteratorConst& it, const String8::IteratorConst& end) {
    return {it.charPtr(), static_cast<std::size_t>(end - it)};
}

String8::IteratorConst afterBlanks(const String8::IteratorConst& it,
                                   const String8::IteratorConst& end) {
    return it + (Text::skipBlanks(it.charPtr(), end.charPtr()) - it.charPtr());
}

String8 found(const String8::IteratorConst& it, const String8::IteratorConst& end) {
    return it == end ? String8("end of text") : excerpt(between(it, end));
}

} // namespace

void cannotConvert(const String8::IteratorConst& it, const String8::IteratorConst& end,
                   const std::type_info& type) {
    const String8::IteratorConst start = afterBlanks(it, end);
    throw RangeException(format("cannot convert %s at column %lld to %s",
                                found(start, end).charPtr(), start.column(),
                                detail::typeName(type).charPtr()));
}

void numberOutOfRange(const String8::IteratorConst& it, const String8::IteratorConst& numberEnd,
                      const std::type_info& type) {
    const String8::IteratorConst start = afterBlanks(it, numberEnd);
    throw RangeException(format("number %s at column %lld is out of range for %s",
                                excerpt(between(start, numberEnd)).charPtr(), start.column(),
                                detail::typeName(type).charPtr()));
}

void expectedInstead(std::string_view expected, const String8::IteratorConst& it,
                     const String8::IteratorConst& end) {
    throw RangeException(format("expected %s at column %lld, found %s", excerpt(expected).charPtr(),
                                it.column(), found(it, end).charPtr()));
}

void rethrowFromDeserializeAttr(const RangeException& failure, const String8& attributeName) {
    const bool nested = failure.text().view().starts_with("in attribute '");
    RangeException marked = failure;
    marked.textIs("in attribute '" + attributeName + (nested ? "', " : "': ") + failure.text());
    throw RangeException(marked);
}

} // namespace Vel
