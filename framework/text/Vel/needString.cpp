#include <Vel/needString.h>

#include <Vel/RangeException.h>
#include <Vel/format.h>
#include <Vel/textErrors.h>
#include <Vel/textReading.h>
#include <string_view>

namespace Vel {

void needString(String8::IteratorConst& it, const String8::IteratorConst& end,
                const char* pattern) {
    String8::IteratorConst pos = it;
    for (std::string_view rest = pattern; !rest.empty();) {
        if (rest.front() == ' ') {
            pos += Text::skipBlanks(pos.charPtr(), end.charPtr()) - pos.charPtr();
            rest.remove_prefix(1);
            continue;
        }
        const std::string_view word = rest.substr(0, rest.find(' '));
        const std::string_view left(pos.charPtr(), static_cast<std::size_t>(end - pos));
        if (!left.starts_with(word)) expectedInstead(word, pos, end);
        pos += static_cast<std::ptrdiff_t>(word.size());
        rest.remove_prefix(word.size());
    }
    it = pos;
}

void needEnd(const String8::IteratorConst& it, const String8::IteratorConst& end,
             const String8& wholeText) {
    if (it == end) return;
    throw RangeException(
        format("junk at column %lld deserializing %s", it.column(), wholeText.charPtr()));
}

} // namespace Vel
