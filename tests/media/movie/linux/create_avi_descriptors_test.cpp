// The recorder where the system has few descriptors left: threads that wait for each other need one an event.
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <vector>

#include "media/movie/create_avi_fixture.h"

namespace tavra::test {
namespace {

// Leaves the process so many descriptors, as long as it lives.
class DescriptorsLeft {
  public:
    explicit DescriptorsLeft(std::size_t count) {
        constexpr rlim_t kFew = 256;
        getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit few{kFew, before_.rlim_max};
        setrlimit(RLIMIT_NOFILE, &few);
        for (int taken = open("/dev/null", O_RDONLY); taken >= 0; taken = open("/dev/null", O_RDONLY)) {
            taken_.push_back(taken);
        }
        for (; count > 0 && !taken_.empty(); --count) giveBack();
    }
    ~DescriptorsLeft() {
        while (!taken_.empty()) giveBack();
        setrlimit(RLIMIT_NOFILE, &before_);
    }
    DescriptorsLeft(const DescriptorsLeft&) = delete;
    DescriptorsLeft& operator=(const DescriptorsLeft&) = delete;

  private:
    void giveBack() {
        close(taken_.back());
        taken_.pop_back();
    }

    rlimit before_{};
    std::vector<int> taken_;
};

#if !defined( \
    __SANITIZE_ADDRESS__)  // with no descriptor left the sanitizer takes sound objects for broken ones
// With one more each time, until it has all that it needs: either nothing starts, or all of it works.
TEST(CreateAviDescriptors, AreThereOrNothingStarts) {
    constexpr std::size_t kEnough = 8;  // six events, and what the start of a thread may want
    for (std::size_t left = 0; left <= kEnough; ++left) {
        SCOPED_TRACE(left);
        MovieFilesDouble files;
        LayoutLog log;
        const DescriptorsLeft few(left);
        Recorder recorder(files);
        ASSERT_EQ(recorder->SetFileFormat(kTestFormat, 0), 0u);
        ASSERT_EQ(recorder->SetImageFormat(8, 4, 0, 1), 0u);
        ASSERT_EQ(recorder->AddFile(u"movie"), 0u);
        const std::uint32_t started = recorder->Start();
        EXPECT_TRUE(started == 0 || started == 8) << started;
        EXPECT_EQ(recorder.status(), started == 0 ? 1u : 0u);
        if (started == 0) {
            recorder.write(pattern(32), 0);
            recorder.write(pattern(32), 1);
        }
        EXPECT_EQ(recorder->SetStatus(0), 0u);
        EXPECT_EQ(log.frames().size(), started == 0 ? 2u : 0u);
        EXPECT_TRUE(left < kEnough || started == 0);
    }
}
#endif

}  // namespace
}  // namespace tavra::test
