#include <Vel/BaseCollection.h>

#include <Vel/valueToStrep.h>
#include <gtest/gtest.h>
#include <memory>

namespace Vel {
namespace {

// The numbers below a limit.
class Numbers : public BaseCollection {
public:
    explicit Numbers(U32 limit) : limit_(limit) {}

    U32 members() const override { return limit_; }

    std::unique_ptr<StrepIterator> strepIterator() const override {
        class Texts : public StrepIterator {
        public:
            explicit Texts(U32 limit) : limit_(limit) {}

            bool isValid() const override { return at_ < limit_; }

            String8 strep() const override { return Vel::valueToStrep(at_); }

            void advance() override { ++at_; }

        private:
            U32 limit_;
            U32 at_ = 0;
        };

        return std::make_unique<Texts>(limit_);
    }

private:
    U32 limit_;
};

TEST(BaseCollection, ItsTextIsAPythonList) {
    EXPECT_EQ(valueToStrep(Numbers(0)), "[]");
    EXPECT_EQ(valueToStrep(Numbers(1)), "[0]");
    EXPECT_EQ(valueToStrep(Numbers(3)), "[0, 1, 2]");
}

} // namespace
} // namespace Vel
