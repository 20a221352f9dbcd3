// Tree.h - members of one fold whose keys have no rank: compared, where all else would degenerate.
#pragma once

#include <Vel/detail/MemberKind.h>
#include <cstdint>
#include <set>

namespace Vel::detail {

class Tree {
public:
    struct Before {
        using is_transparent = void;
        MemberKind kind;

        bool operator()(std::uintptr_t a, std::uintptr_t b) const { return kind.isLess(a, b); }

        bool operator()(const void* key, std::uintptr_t a) const {
            return kind.vtable().keyLessThan(key, MemberKind::object(a), nullptr);
        }
    };

    using Members = std::set<std::uintptr_t, Before>;

    Tree(MemberKind kind, U32 fold) : fold_(fold), members(Before{kind}) {}

    U32 fold() const noexcept { return fold_; }

    U32 count() const noexcept { return static_cast<U32>(members.size()); }

    // The member with this key, or the end.
    Members::const_iterator find(const void* key) const {
        const auto behind = members.upper_bound(key);
        if (behind == members.begin()) return members.end();
        const auto found = std::prev(behind);
        const MemberKind kind = members.key_comp().kind;
        return kind.vtable().keyEquals(key, MemberKind::object(*found)) ? found : members.end();
    }

private:
    U32 fold_;

public:
    Members members;
};

} // namespace Vel::detail
