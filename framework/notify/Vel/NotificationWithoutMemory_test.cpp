// NotificationWithoutMemory_test.cpp - what is said of a callback that throws when the general
// allocator has nothing to give.
#include <Vel/Notifiee.h>

#include <Vel/Notifier.h>
#include <Vel/TraceHandle.h>
#include <Vel/testing/ScarceMemory.h>
#include <algorithm>
#include <exception>
#include <gtest/gtest.h>
#include <new>
#include <string>
#include <string_view>

namespace Vel {
namespace {

using Testing::allocationsLeft;
using Testing::always;

// The next allocations of this scope are refused.
class NoMemory {
public:
    NoMemory() { allocationsLeft = 0; }

    ~NoMemory() { allocationsLeft = always; }
};

class Bell : public Notifier<Bell> {
public:
    class NotifieeConst : public Notifiee<Bell> {
    public:
        virtual void onRing() {}
    };

    void ring() {
        notify(130, [](NotifieeConst& notifiee) { notifiee.onRing(); });
    }
};

class LongWinded : public std::exception {
public:
    LongWinded() noexcept { std::fill_n(text_, sizeof(text_) - 1, 'x'); }

    const char* what() const noexcept override { return text_; }

private:
    char text_[1000] = {};
};

class Hungry : public Bell::NotifieeConst {
public:
    void onRing() override {
        if (isLongWinded) throw LongWinded();
        delete new int(1);
    }

    bool isLongWinded = false;
};

// Keeps the last line, without memory.
class LastLine : public TraceSink {
public:
    LastLine() { TraceHandle::sinkIs(this); }

    ~LastLine() override { TraceHandle::sinkIs(nullptr); }

    void line(const TraceHandle&, unsigned, std::string_view text) override {
        ++lines;
        length_ = std::min(text.size(), sizeof(text_));
        std::copy_n(text.data(), length_, text_);
    }

    std::string text() const { return {text_, length_}; }

    int lines = 0;

private:
    char text_[2000];
    std::size_t length_ = 0;
};

class NotificationWithoutMemory : public testing::Test {
protected:
    NotificationWithoutMemory() {
        hungry->notifierIs(bell);
        hungry->isRegisteredNotifieeIs(true);
    }

    void ring() {
        const NoMemory here;
        bell->ring();
    }

    const Ptr<Bell> bell = new Bell;
    const Ptr<Hungry> hungry = new Hungry;
};

// The first of the process: nothing was traced, and no type was asked for, before.
TEST_F(NotificationWithoutMemory, OneLineIsTraced) {
    LastLine last;
    ring();
    EXPECT_EQ(last.lines, 1);
    EXPECT_EQ(last.text(),
              "Vel::(anonymous namespace)::Hungry threw on attribute 130: std::bad_alloc");
}

TEST_F(NotificationWithoutMemory, ALongLineIsCut) {
    LastLine last;
    hungry->isLongWinded = true;
    ring();
    EXPECT_EQ(last.lines, 1);
    const std::string start = "Vel::(anonymous namespace)::Hungry threw on attribute 130: ";
    EXPECT_EQ(last.text(), start + std::string(240 - start.size(), 'x'));
    bell->ring();
    EXPECT_EQ(last.text(), start + std::string(999, 'x')) << "with memory it is whole";
}

TEST(TraceHandleWithoutMemory, CutsALongLine) {
    const TraceHandle handle("Widget", false);
    const std::string text(1000, 'x');
    testing::internal::CaptureStderr();
    {
        const NoMemory here;
        handle.write(1, text);
        handle.write(1, "short");
    }
    const std::string lines = testing::internal::GetCapturedStderr();
    const std::size_t end = lines.find('\n');
    EXPECT_EQ(end, 511u);
    const std::string start = lines.substr(0, lines.find(" Widget/1 ") + 10);
    EXPECT_EQ(lines.substr(0, end), start + std::string(511 - start.size(), 'x'));
    EXPECT_TRUE(lines.ends_with(" Widget/1 short\n")) << lines;
    testing::internal::CaptureStderr();
    handle.write(1, text);
    EXPECT_TRUE(testing::internal::GetCapturedStderr().ends_with(" Widget/1 " + text + "\n"));
}

} // namespace
} // namespace Vel
