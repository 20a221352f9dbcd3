// attribute_log_fuzz.cpp - any bytes as an attribute log of values of any type.
//
// Promises: a value is read, or an Exception with Id::connection says why not. What was read is
//           written as a record that is read back as the same value and written as the same bytes.
//           A malformed record is left behind: the reader comes to the end, or to where it can go
//           no further.
#include "Fuzz.h"

namespace {

using Vel::NboAttrLog;

Vel::Ptr<NboAttrLog::In> logFrom(std::string_view bytes) {
    const auto* const first = reinterpret_cast<const Vel::U8*>(bytes.data());
    return new NboAttrLog::In(new Vel::MemoryConnection::In({first, bytes.size()}));
}

template <class T>
T next(NboAttrLog::In& in) {
    if constexpr (std::is_enum_v<T>) {
        NboAttrLog::In::Record record(in);
        const T value = static_cast<T>(in.nextS32());
        record.close();
        return value;
    } else {
        return T(&in, Vel::StreamBogon());
    }
}

struct Check {
    std::string_view bytes;

    template <class T>
    void operator()() const {
        const Vel::Ptr<NboAttrLog::In> in = logFrom(bytes);
        std::string last;
        for (;;) {
            try {
                if (in->atEnd()) return;
                checkValue(next<T>(*in.ptr()));
                last.clear();
            } catch (const Vel::Exception& refused) {
                fuzz::promise(refused.ids().has(Vel::Exception::Id::connection),
                              "the id of a refusal");
                const std::string text(refused.text().view());
                fuzz::promise(!text.empty(), "a refusal says why");
                if (text == last) return; // it names the place: the log ends there
                last = text;
            }
        }
    }

    template <class T>
    static void checkValue(const T& value) {
        const std::string written = fuzz::logOf(value);
        const Vel::Ptr<NboAttrLog::In> in = logFrom(written);
        const T again = next<T>(*in.ptr());
        fuzz::promise(in->atEnd(), "a value is one record");
        fuzz::promise(again == value, "what is written is read back");
        fuzz::promise(fuzz::logOf(again) == written, "equal values have equal records");
        fuzz::promise(fuzz::textOf(again) == fuzz::textOf(value), "equal values have equal texts");
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const Check check{{reinterpret_cast<const char*>(data) + 1, size - 1}};
    fuzz::visitType(data[0] % fuzz::ValueTypes::size, check);
    return 0;
}
