// What a preview window does about the mouse: magnification, capture, cursors, and what it forwards.
#include "display/preview_fixture.h"

namespace tavra::test {
namespace {

TEST_F(Preview, ClickMagnifiesAndIsForwarded) {
    parent = system.parentHandle();
    open();
    window.magnificationMode = 1;
    mouse(514, 32, 24);
    EXPECT_EQ(window.mask.load(), (PreviewPlace{16, 12, 32, 24}));
    EXPECT_THAT(camera.takePosts(), ElementsAre(message(45062)));
    EXPECT_THAT(system.takeLog(), ElementsAre("invalidate", "forward 514 to parent"));
    system.alt = true;
    mouse(514, 32, 24);
    EXPECT_EQ(window.mask.load(), (PreviewPlace{0, 0, 64, 48}));
}

TEST_F(Preview, ClickDoesNotMagnifyWhereItIsOffOrTheWindowNotActive) {
    open();
    mouse(514, 32, 24);
    window.magnificationMode = 2;
    system.active = false;
    mouse(514, 32, 24);
    EXPECT_EQ(window.mask.load(), (PreviewPlace{0, 0, 64, 48}));
    EXPECT_THAT(system.log, IsEmpty());  // and nothing is forwarded without a parent
}

TEST_F(Preview, LastFailureOfAPostIsKept) {
    open();
    window.magnificationMode = 1;
    camera.postResult = Status(1816);
    mouse(514, 1, 1);
    camera.postResult = Status(1400);
    mouse(514, 1, 1);
    camera.postResult = Status();
    mouse(514, 1, 1);
    EXPECT_EQ(window.displayError, 1400u);
}

TEST_F(Preview, OtherButtonsAndTheWheelAreOnlyForwarded) {
    parent = system.parentHandle();
    open();
    window.magnificationMode = 1;
    mouse(513, 1, 1);
    mouse(522, 1, 1);
    EXPECT_THAT(system.log, ElementsAre("forward 513 to parent", "forward 522 to parent"));
}

TEST_F(Preview, MouseIsCapturedWhileItIsOverAMagnifyingWindow) {
    open();
    mouse(512, 5, 5);
    EXPECT_THAT(system.log, IsEmpty());
    window.magnificationMode = 1;
    mouse(512, 5, 5);
    system.alt = true;
    mouse(512, 99, 79);
    mouse(512, 100, 79);  // outside
    mouse(512, 5, 5);
    window.magnificationMode = 0;
    mouse(512, 5, 5);
    mouse(512, 5, 5);
    EXPECT_THAT(system.log, ElementsAre("take mouse", "cursor in", "cursor out", "release mouse",
                                        "take mouse", "cursor out", "release mouse"));
}

TEST_F(Preview, AltKeyChangesTheCursor) {
    open();
    system.events->onAltKey();
    window.magnificationMode = 1;
    system.alt = true;
    system.events->onAltKey();
    EXPECT_THAT(system.log, ElementsAre("cursor out"));
}

}  // namespace
}  // namespace tavra::test
