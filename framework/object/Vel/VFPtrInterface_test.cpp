#include <Vel/VFPtrInterface.h>

#include <Vel/Ptr.h>
#include <Vel/PtrInterface.h>
#include <cstdint>
#include <gtest/gtest.h>

namespace Vel {
namespace {

template <std::size_t size>
class Sized : public PtrInterface {
public:
    char bytes[size] = {};
};

TEST(VFPtrInterface, CountsPlainlyByDefault) {
    EXPECT_FALSE(VFPtrInterface::enableThreadSafePointers);
    EXPECT_EQ(sizeof(VFPtrInterface::enableThreadSafePointers), 1u);
}

TEST(VFPtrInterface, GivesMemoryAlignedForEveryMember) {
    const Ptr<Sized<1>> small = new Sized<1>;
    const Ptr<Sized<1000>> large = new Sized<1000>;
    for (const void* object : {static_cast<void*>(small.ptr()), static_cast<void*>(large.ptr())})
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(object) % alignof(U64), 0u);
}

TEST(VFPtrInterface, BuildsObjectsInPlacesOfTheCaller) {
    alignas(Sized<8>) unsigned char place[sizeof(Sized<8>)];
    auto* object = new (place) Sized<8>;
    EXPECT_EQ(static_cast<void*>(object), static_cast<void*>(place));
    object->~Sized<8>();
}

} // namespace
} // namespace Vel
