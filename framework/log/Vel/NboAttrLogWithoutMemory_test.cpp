// NboAttrLogWithoutMemory_test.cpp - a record that is longer than the reader's buffer, when the
// general allocator has nothing to give.
#include <Vel/NboAttrLog.h>

#include <Vel/MemoryConnection.h>
#include <Vel/testing/ScarceMemory.h>
#include <algorithm>
#include <gtest/gtest.h>
#include <new>
#include <span>
#include <vector>

namespace Vel {
namespace {

using Testing::allocationsLeft;
using Testing::always;

TEST(NboAttrLogWithoutMemory, TheReaderStaysAsItWasAndReadsOn) {
    std::vector<U8> payload(300000);
    for (std::size_t i = 0; i < payload.size(); ++i) payload[i] = static_cast<U8>(i * 7 + i / 256);
    const Ptr<MemoryConnection::Out> bytes = new MemoryConnection::Out;
    {
        NboAttrLog::Out out(bytes);
        NboAttrLog::Out::Record record(out, payload.size());
        out.writeBytes(payload);
        record.close();
        out.flush();
    }
    // Each growth of the buffer in turn finds no memory, and is tried again.
    NboAttrLog::In in(new MemoryConnection::In(bytes->bytes()));
    int refused = 0;
    for (bool isRead = false; !isRead;) {
        allocationsLeft = 0;
        EXPECT_THROW(NboAttrLog::In::Record record(in), std::bad_alloc);
        allocationsLeft = 1;
        ++refused;
        try {
            NboAttrLog::In::Record record(in);
            allocationsLeft = always;
            EXPECT_TRUE(std::ranges::equal(in.nextBytes(payload.size()), payload));
            record.close();
            isRead = true;
        } catch (const std::bad_alloc&) {}
        allocationsLeft = always;
    }
    EXPECT_EQ(refused, 3); // the buffer of 64 KiB doubles three times
    EXPECT_TRUE(in.atEnd());
}

} // namespace
} // namespace Vel
