#include "registry.h"

#include <gtest/gtest.h>

#include <thread>

#include "usbd/fake_device.h"

namespace tavra::usbd {
namespace {

using test::FakeDevice;

class FakeSource : public DeviceSource {
  public:
    FakeSource(std::string name, std::uint32_t count) : name_(std::move(name)), count_(count) {}

    std::uint32_t enumerate() override { return count_; }
    std::string path(std::uint32_t index) override { return name_ + std::to_string(index); }
    std::unique_ptr<Device> open(std::uint32_t index, ErrorCode& error) override {
        error = index < count_ ? refuse : 259;
        return error == 0 ? std::make_unique<FakeDevice>() : nullptr;
    }
    std::unique_ptr<Device> open(const std::string& path, ErrorCode& error) override {
        for (std::uint32_t i = 0; i < count_; ++i) {
            if (path == this->path(i)) return open(i, error);
        }
        error = 2;
        return nullptr;
    }

    ErrorCode refuse = 0;

  private:
    std::string name_;
    std::uint32_t count_;
};

struct Fixture {
    FakeSource* first;
    std::unique_ptr<Registry> registry;

    Fixture() {
        std::vector<std::unique_ptr<DeviceSource>> sources;
        sources.push_back(std::make_unique<FakeSource>("real:", 2));
        sources.push_back(std::make_unique<FakeSource>("virtual:", 1));
        first = static_cast<FakeSource*>(sources[0].get());
        registry = std::make_unique<Registry>(std::move(sources));
    }
};

TEST(Registry, TheSourcesFollowEachOther) {
    Fixture f;
    ErrorCode error = 0;
    std::string path;
    for (const auto& [index, expected] : {std::pair{0u, "real:0"}, {1u, "real:1"}, {2u, "virtual:0"}}) {
        EXPECT_NE(f.registry->openByIndex(index, &path, error), 0u);
        EXPECT_EQ(path, expected);
    }
    EXPECT_EQ(f.registry->openByIndex(3, &path, error), 0u);
    EXPECT_EQ(error, 259u);
    EXPECT_EQ(f.registry->openByIndex(0xFFFFFFFF, &path, error), 0u);
}

TEST(Registry, OpensByPathInAnySource) {
    Fixture f;
    ErrorCode error = 0;
    EXPECT_NE(f.registry->openByPath("virtual:0", error), 0u);
    EXPECT_EQ(f.registry->openByPath("virtual:1", error), 0u);
    EXPECT_EQ(error, 2u);
    f.first->refuse = 5;
    EXPECT_EQ(f.registry->openByPath("real:1", error), 0u);
    EXPECT_EQ(error, 5u) << "the reason of the source that knows the path";
}

TEST(Registry, ADeviceThatCannotBeOpenedDoesNotHideTheOthers) {
    Fixture f;
    f.first->refuse = 5;
    ErrorCode error = 0;
    EXPECT_EQ(f.registry->openByIndex(0, nullptr, error), 0u);
    EXPECT_EQ(error, 5u);
    EXPECT_NE(f.registry->openByIndex(2, nullptr, error), 0u);
}

TEST(Registry, HandlesAreNotUsedTwice) {
    Fixture f;
    ErrorCode error = 0;
    const TavraUsbDevice first = f.registry->openByIndex(0, nullptr, error);
    EXPECT_EQ(f.registry->close(first), 0u);
    const TavraUsbDevice second = f.registry->openByIndex(0, nullptr, error);
    EXPECT_NE(first, second);
    EXPECT_EQ(f.registry->find(first), nullptr);
    EXPECT_NE(f.registry->find(second), nullptr);
    EXPECT_EQ(f.registry->close(first), 6u);
    EXPECT_EQ(f.registry->close(0), 6u);
}

TEST(Registry, ClosingEndsTheReadsAndLetsRunningCallsFinish) {
    Fixture f;
    ErrorCode error = 0;
    const TavraUsbDevice handle = f.registry->openByIndex(0, nullptr, error);
    const std::shared_ptr<Device> held = f.registry->find(handle);
    EXPECT_EQ(f.registry->close(handle), 0u);
    EXPECT_EQ(static_cast<FakeDevice&>(*held).endReads, 1);
    EXPECT_EQ(held.use_count(), 1) << "only the running call still has it";
}

TEST(Registry, ManyThreadsOpenUseAndClose) {
    Fixture f;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i) {
                ErrorCode error = 0;
                const TavraUsbDevice handle = f.registry->openByIndex(0, nullptr, error);
                ASSERT_NE(handle, 0u);
                EXPECT_EQ(f.registry->find(handle)->openCount(), 1u);
                EXPECT_EQ(f.registry->close(handle), 0u);
                EXPECT_EQ(f.registry->find(handle), nullptr);
            }
        });
    }
    for (auto& thread : threads) thread.join();
}

}  // namespace
}  // namespace tavra::usbd
