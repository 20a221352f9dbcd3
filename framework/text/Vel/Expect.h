// Expect.h - declares, for the life of a scope, which kinds of exception its block expects.
//
// Scope:  one thread; scopes nest, and an inner scope adds to what the outer ones expect.
// Effect: an Exception made inside the scope with one of these ids has expected() set; nothing else
//         changes.
#pragma once

#include <Vel/Exception.h>
#include <Vel/Export.h>

namespace Vel {

class VEL_API Expect {
public:
    explicit Expect(Exception::Id id) noexcept;
    ~Expect();
    Expect(const Expect&) = delete;
    Expect& operator=(const Expect&) = delete;

    // Whether a scope of the calling thread expects one of `ids`.
    static bool isExpected(Exception::IdBitArray ids) noexcept;

private:
    Exception::IdBitArray outer_;
};

} // namespace Vel
