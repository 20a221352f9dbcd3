// Tree.h - members of one fold whose keys have no rank: compared, where all else would degenerate.
// Test: LineMap_test.cpp.
#pragma once

#include <Vel/detail/MemberKind.h>
#include <cstdint>
#include <iterator>
#include <set>

namespace Vel::detail {

struct Tree {
    struct Before {
        using is_transparent = void;
        MemberKind kind;

        bool operator()(std::uintptr_t a, std::uintptr_t b) const { return kind.isLess(a, b); }

        bool operator()(const void* key, std::uintptr_t a) const {
            return kind.vtable().keyLessThan(key, MemberKind::object(a), nullptr);
        }
    };

    using Members = std::set<std::uintptr_t, Before>;

    Tree(MemberKind kind, U32 allFold) : fold(allFold), members(Before{kind}) {}

    U32 count() const noexcept { return static_cast<U32>(members.size()); }

    // The member with this key, or the end.
    Members::const_iterator find(const void* key) const {
        const auto behind = members.upper_bound(key);
        if (behind == members.begin()) return members.end();
        const auto found = std::prev(behind);
        const auto& vtable = members.key_comp().kind.vtable();
        return vtable.keyEquals(key, MemberKind::object(*found)) ? found : members.end();
    }

    const U32 fold;
    Members members;
};

} // namespace Vel::detail
