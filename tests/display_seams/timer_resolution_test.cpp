// The system's timer is fine for as long as redraws are paced.
#include "capture/draw_worker.h"
#include "display_seams/window_fixture.h"

namespace tavra::test {
namespace {

class TimerResolution : public PreviewOnSeams {
  protected:
    static void expectCounts(int raises, int restores) {
        EXPECT_EQ(seams().timerRaises, raises);
        EXPECT_EQ(seams().timerRestores, restores);
    }
};

TEST_F(TimerResolution, IsRaisedForTheLifeOfTheWorker) {
    {
        CWorkerDrawTimming worker([](TavraWindow) {});
        expectCounts(1, 0);
        ASSERT_TRUE(worker.start("tavra-draw").ok());
        worker.stop();
        expectCounts(1, 0);
    }
    expectCounts(1, 1);
}

TEST_F(TimerResolution, IsRaisedForARunOfTheStream) {
    openMono();
    expectCounts(0, 0);
    for (int run = 1; run <= 2; ++run) {
        start();
        expectCounts(run, run - 1);
        stopAndExpectCode(0);
        expectCounts(run, run);
    }
}

}  // namespace
}  // namespace tavra::test
