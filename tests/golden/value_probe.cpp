// value_probe.cpp - reads values as the library does, for values.py to compare. Not installed.
//
// Each line asks one question, `text TYPE HEX` or `log TYPE HEX`: the bytes of a whole text, or of
// a log with one record. The answer is a line `value HEX HEX`, the value's text and its record, or
// `refused HEX`, the message. --types: the names of all value types instead, in the order of
// registration.
#include <Brixo/testing/EveryType.h>
#include <Vel/Vel.h>
#include <cstddef>
#include <exception>
#include <iostream>
#include <optional>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace {

using Brixo::Testing::EveryValue;
using Vel::NboAttrLog;
using Vel::String8;
using Vel::U8;

std::string hex(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const char c : bytes) {
        text += digits[static_cast<U8>(c) >> 4U];
        text += digits[static_cast<U8>(c) & 15U];
    }
    return text;
}

std::string unhex(std::string_view text) {
    std::string bytes;
    for (std::size_t at = 0; at + 1 < text.size(); at += 2)
        bytes += static_cast<char>(std::stoi(std::string(text.substr(at, 2)), nullptr, 16));
    return bytes;
}

template <class T>
T fromText(const std::string& text) {
    if constexpr (std::is_enum_v<T>) {
        T value{};
        Vel::strepToValue(String8(std::string_view(text)), &value);
        return value;
    } else {
        return Vel::parseWhole<T>(String8(std::string_view(text)));
    }
}

template <class T>
T fromLog(const std::string& bytes) {
    const auto* const first = reinterpret_cast<const U8*>(bytes.data());
    NboAttrLog::In in(new Vel::MemoryConnection::In({first, bytes.size()}));
    if constexpr (std::is_enum_v<T>) {
        NboAttrLog::In::Record record(in);
        const T value = static_cast<T>(in.nextS32());
        record.close();
        return value;
    } else {
        return T(&in, Vel::StreamBogon());
    }
}

template <class T>
std::string logged(const T& value) {
    const Vel::Ptr<Vel::MemoryConnection::Out> bytes = new Vel::MemoryConnection::Out;
    const Vel::Ptr<NboAttrLog::Out> out = new NboAttrLog::Out(bytes);
    if constexpr (std::is_enum_v<T>) {
        NboAttrLog::Out::Record record(*out);
        out->writeS32(static_cast<Vel::S32>(value));
        record.close();
    } else {
        out << value;
    }
    out->flush();
    const std::span<const U8> all = bytes->bytes();
    return {reinterpret_cast<const char*>(all.data()), all.size()};
}

template <class T>
std::string answer(const std::string& what, const std::string& given) {
    try {
        const T value = what == "text" ? fromText<T>(given) : fromLog<T>(given);
        return "value " + hex(valueToStrep(value).view()) + " " + hex(logged(value));
    } catch (const Vel::Exception& refused) {
        return "refused " + hex(refused.text().view());
    }
}

std::string answerTo(const std::string& question) {
    std::istringstream words(question);
    std::string what;
    std::string name;
    std::string given;
    words >> what >> name >> given;
    std::optional<std::string> answered;
    EveryValue::forEach([&]<class T>() {
        if (Vel::qualifiedNameOf<T>() == name) answered = answer<T>(what, unhex(given));
    });
    return answered ? *answered : throw std::invalid_argument("no type " + name);
}

} // namespace

int main(int count, const char* const* arguments) {
    if (count == 2 && std::string_view(arguments[1]) == "--types") {
        for (const std::string& name : Brixo::Testing::namesOf<EveryValue>())
            std::cout << name << '\n';
        return 0;
    }
    try {
        for (std::string question; std::getline(std::cin, question);)
            std::cout << answerTo(question) << '\n';
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "value-probe: " << failure.what() << '\n';
        return 1;
    }
}
