#include <Vel/nearestNames.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <utility>

namespace Vel {

namespace {

// Letters count alike in both cases: a wrong case is no distance at all.
bool same(char a, char b) noexcept {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
}

std::size_t distance(Name a, Name b) {
    std::vector<std::vector<std::size_t>> rows(a.size() + 1,
                                               std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                rows[i][j] = i + j;
                continue;
            }
            const std::size_t change = same(a[i - 1], b[j - 1]) ? 0 : 1;
            std::size_t least =
                std::min({rows[i - 1][j] + 1, rows[i][j - 1] + 1, rows[i - 1][j - 1] + change});
            if (i > 1 && j > 1 && same(a[i - 1], b[j - 2]) && same(a[i - 2], b[j - 1]))
                least = std::min(least, rows[i - 2][j - 2] + 1);
            rows[i][j] = least;
        }
    }
    return rows[a.size()][b.size()];
}

} // namespace

String8 nearestNames(Name written, const std::vector<Name>& known) {
    constexpr std::size_t most = 3;
    std::vector<std::pair<std::size_t, Name>> near;
    for (const Name name : known) {
        const std::size_t longer = std::max(written.size(), name.size());
        const auto isNear = [longer](std::size_t away) { return away < (longer + 2) / 3; };
        // By as much as one is longer, characters have to be inserted: a name that is too long for
        // that, and may be very long, is not compared.
        if (!isNear(longer - std::min(written.size(), name.size()))) continue;
        const std::size_t away = distance(written, name);
        if (isNear(away)) near.emplace_back(away, name);
    }
    std::ranges::stable_sort(near, {}, &std::pair<std::size_t, Name>::first);
    String8 text;
    for (std::size_t i = 0; i < near.size() && i < most; ++i) {
        if (i != 0) text += ", ";
        text += String8(near[i].second);
    }
    return text;
}

} // namespace Vel
