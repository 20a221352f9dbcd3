#include <Vel/NboAttrLog.h>

#include <Vel/Exception.h>
#include <Vel/MemoryConnection.h>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace Vel {
namespace {

using Bytes = std::vector<U8>;

Bytes written(const std::function<void(NboAttrLog::Out&)>& write) {
    const Ptr<MemoryConnection::Out> bytes = new MemoryConnection::Out;
    NboAttrLog::Out out(bytes);
    NboAttrLog::Out::Record record(out);
    write(out);
    record.close();
    out.flush();
    return {bytes->bytes().begin(), bytes->bytes().end()};
}

std::string errorOf(const Bytes& bytes, const std::function<void(NboAttrLog::In&)>& read) {
    NboAttrLog::In in(new MemoryConnection::In(bytes));
    try {
        NboAttrLog::In::Record record(in);
        read(in);
        record.close();
        return "";
    } catch (const Exception& error) {
        EXPECT_TRUE(error.ids().has(Exception::Id::connection));
        return error.what();
    }
}

TEST(NboAttrLog, WritesEachFieldInNetworkOrderBehindTheRecordsLength) {
    EXPECT_EQ(written([](NboAttrLog::Out& out) {
                  out.writeU8(1);
                  out.writeU16(0x0203);
                  out.writeU32(0x04050607);
                  out.writeU64(0x08090a0b0c0d0e0f);
                  out.writeS32(-2);
                  out.writeS64(-3);
                  out.writeBool(true);
                  out.writeString8("ab");
              }),
              (Bytes{0,    0,    0,    34,   1,    2,  3,    4,    5,    6,    7,    8,    9,
                     10,   11,   12,   13,   14,   15, 0xff, 0xff, 0xff, 0xfe, 0xff, 0xff, 0xff,
                     0xff, 0xff, 0xff, 0xff, 0xfd, 1,  0,    0,    0,    2,    'a',  'b'}));
}

TEST(NboAttrLog, ReadsWhatItWrote) {
    const Bytes bytes = written([](NboAttrLog::Out& out) {
        out.writeU8(255);
        out.writeU16(65535);
        out.writeU32(4000000000);
        out.writeU64(~U64{0});
        out.writeS32(-2147483647);
        out.writeS64(-1);
        out.writeBool(false);
        out.writeString8(String8(std::string_view("\0x", 2)));
    });
    EXPECT_EQ(errorOf(bytes,
                      [](NboAttrLog::In& in) {
                          EXPECT_EQ(in.nextU8(), 255u);
                          EXPECT_EQ(in.nextU16(), 65535u);
                          EXPECT_EQ(in.nextU32(), 4000000000u);
                          EXPECT_EQ(in.nextU64(), ~U64{0});
                          EXPECT_EQ(in.nextS32(), -2147483647);
                          EXPECT_EQ(in.nextS64(), -1);
                          EXPECT_FALSE(in.nextBool());
                          EXPECT_EQ(in.nextString8().view(), std::string_view("\0x", 2));
                          EXPECT_EQ(in.remaining(), 0u);
                      }),
              "");
}

TEST(NboAttrLog, NestedRecordsAreOne) {
    const Bytes bytes = written([](NboAttrLog::Out& out) {
        out.writeU8(1);
        NboAttrLog::Out::Record inner(out);
        out.writeU8(2);
        inner.close();
    });
    EXPECT_EQ(bytes, (Bytes{0, 0, 0, 2, 1, 2}));
}

TEST(NboAttrLog, ARecordThatIsNotClosedLeavesNoByte) {
    const Bytes bytes = written([](NboAttrLog::Out& out) {
        out.writeU8(1);
        {
            const NboAttrLog::Out::Record abandoned(out);
            out.writeU32(2);
        }
        out.writeU8(3);
    });
    EXPECT_EQ(bytes, (Bytes{0, 0, 0, 2, 1, 3}));
}

TEST(NboAttrLog, NeverReadsBehindTheEndOfARecord) {
    EXPECT_EQ(
        errorOf({0, 0, 0, 3, 1, 2, 3, 4}, [](NboAttrLog::In& in) { in.nextU32(); }),
        "attribute log record at byte 0 is malformed: a field of 4 bytes is read where 3 are left");
    EXPECT_EQ(errorOf({0, 0, 0, 2, 1, 2}, [](NboAttrLog::In& in) { in.nextU8(); }),
              "attribute log record at byte 0 is malformed: 1 bytes are left over");
    EXPECT_EQ(errorOf({0, 0, 0, 1, 7}, [](NboAttrLog::In& in) { in.nextBool(); }),
              "attribute log record at byte 0 is malformed: 7 is no truth value");
    EXPECT_EQ(
        errorOf({0, 0, 0, 4, 0xff, 0xff, 0xff, 0xff}, [](NboAttrLog::In& in) { in.nextString8(); }),
        "attribute log record at byte 0 is malformed: a field of 4294967295 bytes is read where "
        "0 are left");
}

TEST(NboAttrLog, SaysWhereALogEnds) {
    const auto nothing = [](NboAttrLog::In&) {};
    EXPECT_EQ(errorOf({}, nothing), "attribute log ends at byte 0: no record follows");
    EXPECT_EQ(errorOf({0, 0}, nothing),
              "attribute log ends at byte 2, inside the record at byte 0");
    EXPECT_EQ(errorOf({0, 0, 0, 5, 1, 2}, nothing),
              "attribute log ends at byte 6, inside the record at byte 0");
    EXPECT_EQ(errorOf({0xff, 0xff, 0xff, 0xff}, nothing),
              "attribute log record at byte 0 is malformed: its length of 4294967295 is more than "
              "16777216");
}

TEST(NboAttrLog, GoesOnWithTheNextRecordAfterAMalformedOne) {
    const Bytes bytes = {0, 0, 0, 3, 9, 9, 9, 0, 0, 0, 1, 5};
    NboAttrLog::In in(new MemoryConnection::In(bytes));
    EXPECT_THROW(
        {
            NboAttrLog::In::Record record(in);
            in.nextU8();
            record.close();
        },
        Exception);
    ASSERT_FALSE(in.atEnd());
    NboAttrLog::In::Record record(in);
    EXPECT_EQ(in.nextU8(), 5u);
    record.close();
    EXPECT_TRUE(in.atEnd());
}

// Gives a few bytes at a time.
class Trickle : public ByteConnection::In {
public:
    Trickle(Bytes bytes, unsigned seed) : bytes_(std::move(bytes)), random_(seed) {}

    std::size_t read(std::span<U8> room) override {
        const std::size_t most = std::min(room.size(), bytes_.size() - given_);
        const std::size_t count = std::min<std::size_t>(most, 1 + random_() % 5000);
        std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(given_), count, room.begin());
        given_ += count;
        return count;
    }

private:
    Bytes bytes_;
    std::size_t given_ = 0;
    std::mt19937 random_;
};

TEST(NboAttrLog, CarriesManyRecordsOfAllSizes) {
    const Ptr<MemoryConnection::Out> bytes = new MemoryConnection::Out;
    {
        const Ptr<NboAttrLog::Out> out = new NboAttrLog::Out(bytes);
        for (U32 i = 0; i < 2000; ++i) {
            NboAttrLog::Out::Record record(*out);
            out->writeU32(i);
            const std::size_t size = i % 500 == 499 ? 100'000 : i % 90;
            for (std::size_t b = 0; b < size; ++b) out->writeU8(static_cast<U8>(b));
            record.close();
        }
    }
    NboAttrLog::In in(new Trickle({bytes->bytes().begin(), bytes->bytes().end()}, 4));
    for (U32 i = 0; i < 2000; ++i) {
        ASSERT_FALSE(in.atEnd());
        NboAttrLog::In::Record record(in);
        ASSERT_EQ(in.nextU32(), i);
        const std::size_t size = i % 500 == 499 ? 100'000 : i % 90;
        ASSERT_EQ(in.remaining(), size);
        const auto data = in.nextBytes(size);
        for (std::size_t b = 0; b < size; ++b) ASSERT_EQ(data[b], static_cast<U8>(b));
        record.close();
    }
    EXPECT_TRUE(in.atEnd());
}

TEST(NboAttrLog, FixedFieldsAreARecord) {
    const Ptr<MemoryConnection::Out> bytes = new MemoryConnection::Out;
    NboAttrLog::Out out(bytes);
    NboAttrLog::Out::Fixed fields(out, 16);
    ASSERT_TRUE(fields);
    fields.writeU8(1);
    fields.writeU16(0x0203);
    fields.writeU64(0x0405060708090a0b);
    fields.writeS32(-2);
    fields.writeBool(true);
    out.flush();
    const Bytes expected{0, 0, 0, 16, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 0xff, 0xff, 0xff, 0xfe, 1};
    EXPECT_EQ(Bytes(bytes->bytes().begin(), bytes->bytes().end()), expected);

    NboAttrLog::In in(new MemoryConnection::In(expected));
    ASSERT_FALSE(in.atEnd());
    NboAttrLog::In::Fixed read(in, 16);
    ASSERT_TRUE(read);
    EXPECT_EQ(read.nextU8(), 1u);
    EXPECT_EQ(read.nextU16(), 0x0203u);
    EXPECT_EQ(read.nextU64(), 0x0405060708090a0bu);
    EXPECT_EQ(read.nextS32(), -2);
    EXPECT_TRUE(read.nextBool());
    EXPECT_EQ(in.remaining(), 0u);
    EXPECT_TRUE(in.atEnd());
}

TEST(NboAttrLog, FixedFieldsAreRefusedInAnOpenRecord) {
    const Bytes bytes = written([](NboAttrLog::Out& out) {
        out.writeU8(1);
        EXPECT_FALSE(NboAttrLog::Out::Fixed(out, 1));
        out.writeU8(2);
    });
    EXPECT_EQ(bytes, (Bytes{0, 0, 0, 2, 1, 2}));
    EXPECT_EQ(errorOf(bytes,
                      [](NboAttrLog::In& in) {
                          EXPECT_FALSE(NboAttrLog::In::Fixed(in, 1));
                          EXPECT_EQ(in.nextU16(), 0x0102u);
                      }),
              "");
}

TEST(NboAttrLog, FixedFieldsAreRefusedUnlessTheRecordIsThereAndOfThatLength) {
    const Bytes bytes{0, 0, 0, 2, 7, 8};
    NboAttrLog::In in(new MemoryConnection::In(bytes));
    EXPECT_FALSE(NboAttrLog::In::Fixed(in, 2)) << "nothing is in the buffer yet";
    ASSERT_FALSE(in.atEnd());
    EXPECT_FALSE(NboAttrLog::In::Fixed(in, 1));
    EXPECT_FALSE(NboAttrLog::In::Fixed(in, 3));
    EXPECT_TRUE(NboAttrLog::In::Fixed(in, 2));
    EXPECT_TRUE(in.atEnd());

    NboAttrLog::In cut(new MemoryConnection::In(std::span(bytes).first(5)));
    ASSERT_FALSE(cut.atEnd());
    EXPECT_FALSE(NboAttrLog::In::Fixed(cut, 2));
}

TEST(NboAttrLog, ATruthValueAmongFixedFieldsIsCheckedToo) {
    const Bytes bytes{0, 0, 0, 1, 0, 0, 0, 0, 1, 2};
    NboAttrLog::In in(new MemoryConnection::In(bytes));
    ASSERT_FALSE(in.atEnd());
    EXPECT_FALSE(NboAttrLog::In::Fixed(in, 1).nextBool());
    try {
        NboAttrLog::In::Fixed(in, 1).nextBool();
        ADD_FAILURE() << "2 was read";
    } catch (const Exception& error) {
        EXPECT_STREQ(error.what(),
                     "attribute log record at byte 5 is malformed: 2 is no truth value");
    }
    EXPECT_TRUE(in.atEnd());
}

TEST(NboAttrLog, FixedFieldsAndOthersTakeTurnsAcrossTheBuffersEnd) {
    constexpr U32 count = 20'000;
    const Ptr<MemoryConnection::Out> bytes = new MemoryConnection::Out;
    NboAttrLog::Out out(bytes);
    U32 refused = 0;
    for (U32 i = 0; i < count; ++i) {
        if (i % 3 == 0) {
            NboAttrLog::Out::Record record(out);
            out.writeString8("between");
            record.close();
        }
        if (NboAttrLog::Out::Fixed fields(out, sizeof i); fields) {
            fields.writeU32(i);
        } else {
            ++refused;
            NboAttrLog::Out::Record record(out, sizeof i);
            out.writeU32(i);
            record.close();
        }
    }
    out.flush();
    EXPECT_GT(refused, 0u);
    EXPECT_LT(refused, 10u);

    NboAttrLog::In in(new Trickle({bytes->bytes().begin(), bytes->bytes().end()}, 5));
    U32 next = 0;
    while (!in.atEnd()) {
        if (NboAttrLog::In::Fixed fields(in, sizeof next); fields) {
            ASSERT_EQ(fields.nextU32(), next++);
            continue;
        }
        NboAttrLog::In::Record record(in);
        if (in.remaining() == sizeof next)
            ASSERT_EQ(in.nextU32(), next++);
        else
            ASSERT_EQ(in.nextString8(), "between");
        record.close();
    }
    EXPECT_EQ(next, count);
}

TEST(NboAttrLogDeathTest, FieldsWithoutARecordAreAnAssertion) {
    NboAttrLog::Out out(new MemoryConnection::Out);
    EXPECT_DEATH(out.writeU8(1), "assertion failed: depth_ > 0");
    NboAttrLog::Out::Fixed(out, 1).writeU8(1);
    EXPECT_DEATH(out.writeU8(1), "assertion failed: depth_ > 0");
    EXPECT_DEATH(out.writeString8(""), "assertion failed: depth_ > 0");
    const Bytes one{0, 0, 0, 1, 1};
    NboAttrLog::In in(new MemoryConnection::In(one));
    EXPECT_DEATH(in.nextU8(), "assertion failed: depth_ > 0");
    ASSERT_FALSE(in.atEnd());
    ASSERT_TRUE(NboAttrLog::In::Fixed(in, 1));
    EXPECT_DEATH(in.nextU8(), "assertion failed: depth_ > 0");
}

} // namespace
} // namespace Vel
