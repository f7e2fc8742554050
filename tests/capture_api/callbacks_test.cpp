// The three callback lists, and what callbacks are given.
#include <gtest/gtest.h>

#include <algorithm>

#include "capture_api/stream_fixture.h"
#include "support/drawing.h"
#include "support/failing_allocations.h"

namespace tavra::test {
namespace {

// One list of the interface.
template <typename F>
struct ListExports {
    using Function = F;
    TavraBool (*add)(TavraHandle, Function, void*, std::uint32_t*);
    TavraBool (*remove)(TavraHandle, std::uint32_t);
    TavraBool (*removeAll)(TavraHandle);
    TavraBool (*count)(TavraHandle, std::uint32_t*);
    TavraBool (*at)(TavraHandle, std::uint32_t, Function*, std::uint32_t*);
    TavraBool (*list)(TavraHandle, std::uint32_t, Function*, std::uint32_t*, std::uint32_t*);
};

struct RawList {
    static constexpr ListExports<TavraRawCallback> kExports{
        Tavra_AddRawCallback,      Tavra_RemoveRawCallback, Tavra_RemoveAllRawCallback,
        Tavra_GetRawCallbackCount, Tavra_GetRawCallback,    Tavra_GetRawCallbackList};
    static void function(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint16_t,
                         std::uint32_t, void*, std::uint32_t*) {}
};
struct BitmapList {
    static constexpr ListExports<TavraPreviewBitmapCallback> kExports{
        Tavra_AddPreviewBitmapCallback,       Tavra_RemovePreviewBitmapCallback,
        Tavra_RemoveAllPreviewBitmapCallback, Tavra_GetPreviewBitmapCallbackCount,
        Tavra_GetPreviewBitmapCallback,       Tavra_GetPreviewBitmapCallbackList};
    static void function(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                         void*, std::uint32_t*) {}
};
struct GdiList {
    static constexpr ListExports<TavraPreviewGDICallback> kExports{
        Tavra_AddPreviewGDICallback,      Tavra_RemovePreviewGDICallback, Tavra_RemoveAllPreviewGDICallback,
        Tavra_GetPreviewGDICallbackCount, Tavra_GetPreviewGDICallback,    Tavra_GetPreviewGDICallbackList};
    static void function(TavraDC, std::uint32_t, std::uint32_t, std::uint32_t, void*, std::uint32_t) {}
};

template <typename List>
class CallbackLists : public StreamTest {
  protected:
    CallbackLists() { openCamera(); }

    std::uint32_t add() {
        std::uint32_t identifier = 0;
        EXPECT_TRUE(exports.add(handle, List::function, nullptr, &identifier));
        return identifier;
    }
    std::uint32_t count() {
        std::uint32_t count = 99;
        EXPECT_TRUE(exports.count(handle, &count));
        return count;
    }

    const decltype(List::kExports)& exports = List::kExports;
};

using Lists = testing::Types<RawList, BitmapList, GdiList>;
TYPED_TEST_SUITE(CallbackLists, Lists);

TYPED_TEST(CallbackLists, NumberFromOneUpwards) {
    EXPECT_EQ(this->count(), 0u);
    EXPECT_EQ(this->add(), 1u);
    EXPECT_EQ(this->add(), 2u);
    EXPECT_EQ(this->add(), 3u);
    EXPECT_EQ(this->count(), 3u);
}

TYPED_TEST(CallbackLists, NumberAboveTheHighestThatIsThere) {
    for (int i = 0; i < 3; ++i) this->add();
    EXPECT_TRUE(this->exports.remove(this->handle, 2));
    EXPECT_EQ(this->add(), 4u);
    EXPECT_TRUE(this->exports.remove(this->handle, 4));
    EXPECT_EQ(this->add(), 4u) << "a number comes back if it was the highest";
    for (const std::uint32_t identifier : {1u, 3u, 4u})
        EXPECT_TRUE(this->exports.remove(this->handle, identifier));
    EXPECT_EQ(this->add(), 1u);
}

TYPED_TEST(CallbackLists, RemovingAnUnknownNumberChangesNothing) {
    this->add();
    const std::uint32_t before = Tavra_GetLastError(this->handle);
    EXPECT_TRUE(this->exports.remove(this->handle, 7));
    EXPECT_EQ(this->count(), 1u);
    EXPECT_EQ(Tavra_GetLastError(this->handle), before);
}

TYPED_TEST(CallbackLists, RemoveAllEmptiesTheList) {
    this->add();
    this->add();
    EXPECT_TRUE(this->exports.removeAll(this->handle));
    EXPECT_EQ(this->count(), 0u);
    EXPECT_TRUE(this->exports.removeAll(this->handle));
}

TYPED_TEST(CallbackLists, GiveAnEntryByPosition) {
    this->add();
    this->add();
    decltype(&TypeParam::function) function = nullptr;
    std::uint32_t identifier = 0;
    ASSERT_TRUE(this->exports.at(this->handle, 1, &function, &identifier));
    EXPECT_EQ(function, &TypeParam::function);
    EXPECT_EQ(identifier, 2u);
    ASSERT_TRUE(this->exports.at(this->handle, 2, &function, &identifier));
    EXPECT_EQ(function, nullptr);
    EXPECT_EQ(identifier, 0u);
}

TYPED_TEST(CallbackLists, TellTheirLengthAndFillWhatTheArraysHold) {
    for (int i = 0; i < 3; ++i) this->add();
    decltype(&TypeParam::function) functions[2] = {};
    std::uint32_t identifiers[2] = {};
    std::uint32_t count = 0;
    ASSERT_TRUE(this->exports.list(this->handle, 1, functions, identifiers, &count));
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(functions[0], &TypeParam::function);
    EXPECT_EQ(identifiers[0], 1u);
    EXPECT_EQ(functions[1], nullptr);
    EXPECT_EQ(identifiers[1], 0u);
    count = 0;
    ASSERT_TRUE(this->exports.list(this->handle, 0, nullptr, nullptr, &count));
    EXPECT_EQ(count, 3u);
}

TYPED_TEST(CallbackLists, RefuseMissingPointersAndHandles) {
    std::uint32_t number = 0;
    EXPECT_FALSE(this->exports.add(this->handle, nullptr, nullptr, &number));
    EXPECT_FALSE(this->exports.add(this->handle, TypeParam::function, nullptr, nullptr));
    EXPECT_FALSE(this->exports.count(this->handle, nullptr));
    EXPECT_FALSE(this->exports.at(this->handle, 0, nullptr, &number));
    EXPECT_FALSE(this->exports.list(this->handle, 1, nullptr, nullptr, &number));
    EXPECT_EQ(Tavra_GetLastError(this->handle), TAVRA_ERROR_INVALID_ARGUMENT);
    EXPECT_EQ(this->count(), 0u);
    EXPECT_FALSE(this->exports.removeAll(nullptr));
    EXPECT_EQ(Tavra_GetLastError(nullptr), TAVRA_ERROR_INVALID_HANDLE);
}

TYPED_TEST(CallbackLists, RefuseWhatNoMemoryHolds) {
    std::uint32_t identifier = 77;
    {
        const FailAllocationsFrom failing(1);
        EXPECT_FALSE(this->exports.add(this->handle, TypeParam::function, nullptr, &identifier));
    }
    EXPECT_EQ(this->lastError(), TAVRA_ERROR_OUT_OF_MEMORY);
    EXPECT_EQ(this->count(), 0u);
    EXPECT_EQ(this->add(), 1u);
}

// What is in the list when the device is closed, the last thing that a close does with it.
TYPED_TEST(CallbackLists, AreEmptyBeforeACloseLetsTheDeviceGo) {
    static TavraHandle closing;
    static std::uint32_t left;
    this->add();
    this->add();
    closing = this->handle;
    left = 99;
    this->operations().close = [](TavraUsbDevice device) {
        TypeParam::kExports.count(closing, &left);
        return StreamTest::doublesOperations->close(device);
    };
    Tavra_Close(std::exchange(this->handle, nullptr));
    EXPECT_EQ(left, 0u);
}

class Callbacks : public StreamTest {};

TEST_F(Callbacks, RawOnesGetTheUntouchedFrame) {
    openCamera(2, 4, 6, 4);  // 10 bits in words, mosaic
    collectImages();         // the preview reduces the frame in place, after the raw callbacks
    collectRaw();
    start();
    sendFrame(17, pattern(5));
    const auto seen = raws.waitFor(1);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].data.size(), 6u * 4 * 2);
    EXPECT_EQ(seen[0].data, pattern(5));
    EXPECT_EQ(seen[0].width, 6u);
    EXPECT_EQ(seen[0].height, 4u);
    EXPECT_EQ(seen[0].number, 17u);
    EXPECT_EQ(seen[0].colorArray, 4);
    EXPECT_EQ(seen[0].transferBits, 2u);
}

TEST_F(Callbacks, RawOnesSeeTheColorArrayAfterTheCamerasMirror) {
    DoubleCamera& camera = describe(1, 5);
    camera.setCapability(1, 6);
    camera.status(63) = 1;  // the camera mirrors horizontally
    open();
    collectRaw();
    start();
    sendFrame(1, pattern(0));
    EXPECT_EQ(raws.waitFor(1)[0].colorArray, 4);
}

TEST_F(Callbacks, KeepAWordOfTheirOwnFromFrameToFrame) {
    openCamera();
    collectRaw();
    collectRaw();
    start();
    sendFrame(1, pattern(0));
    sendFrame(2, pattern(0));
    const auto seen = raws.waitFor(4);
    ASSERT_EQ(seen.size(), 4u);
    EXPECT_EQ(seen[0].word, 0u);
    EXPECT_EQ(seen[1].word, 0u);
    EXPECT_EQ(seen[2].word, 1u);
    EXPECT_EQ(seen[3].word, 1u);
}

// Order and nesting.
struct Note {
    std::vector<int>* order;
    int number;
    TavraHandle handle = nullptr;
    bool addAnother = false;
    Note* another = nullptr;
    platform::Event called{platform::Event::Reset::Manual};

    static void callback(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint16_t,
                         std::uint32_t, void* context, std::uint32_t*) {
        auto& note = *static_cast<Note*>(context);
        note.order->push_back(note.number);
        if (std::exchange(note.addAnother, false)) {
            std::uint32_t identifier = 0;
            Tavra_AddRawCallback(note.handle, callback, note.another, &identifier);
        }
        note.called.set();
    }
};

TEST_F(Callbacks, AreCalledInTheOrderOfRegistration) {
    openCamera();
    std::vector<int> order;
    Note first{&order, 1}, second{&order, 2}, third{&order, 3};
    std::uint32_t identifier = 0;
    for (Note* note : {&first, &second, &third}) {
        ASSERT_TRUE(Tavra_AddRawCallback(handle, Note::callback, note, &identifier));
    }
    start();
    sendFrame(1, pattern(0));
    ASSERT_TRUE(third.called.wait(kPatienceMs));
    stopAndExpectCode(0);
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST_F(Callbacks, MayRegisterAnother) {
    openCamera();
    std::vector<int> order;
    Note second{&order, 2};
    Note first{&order, 1, handle, true, &second};
    std::uint32_t identifier = 0;
    ASSERT_TRUE(Tavra_AddRawCallback(handle, Note::callback, &first, &identifier));
    start();
    sendFrame(1, pattern(0));
    ASSERT_TRUE(second.called.wait(kPatienceMs));
    stopAndExpectCode(0);
    ASSERT_GE(order.size(), 2u);
    EXPECT_EQ(order[0], 1);
    EXPECT_EQ(order[1], 2);
}

// A callback that removes the registration behind its own.
struct Removing {
    TavraHandle handle;
    std::uint32_t next;

    static void callback(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint16_t,
                         std::uint32_t, void* context, std::uint32_t*) {
        const auto& removing = *static_cast<Removing*>(context);
        Tavra_RemoveRawCallback(removing.handle, removing.next);
    }
};

TEST_F(Callbacks, MayRemoveTheNextOne) {
    openCamera();
    std::vector<int> order;
    Removing removing{handle, 2};
    Note second{&order, 2}, third{&order, 3};
    std::uint32_t identifier = 0;
    ASSERT_TRUE(Tavra_AddRawCallback(handle, Removing::callback, &removing, &identifier));
    ASSERT_TRUE(Tavra_AddRawCallback(handle, Note::callback, &second, &identifier));
    ASSERT_EQ(identifier, 2u);
    ASSERT_TRUE(Tavra_AddRawCallback(handle, Note::callback, &third, &identifier));
    start();
    sendFrame(1, pattern(0));
    ASSERT_TRUE(third.called.wait(kPatienceMs));
    stopAndExpectCode(0);
    EXPECT_EQ(order, std::vector<int>{3});
}

TEST_F(Callbacks, OfTheBitmapKindAloneNeitherPublishNorPost) {
    openCamera();
    collectImages();
    start();
    sendFrame(8, pattern(1));
    const auto seen = images.waitFor(1);
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].number, 8u);
    EXPECT_EQ(seen[0].format, 1u);
    EXPECT_EQ(seen[0].word, 0u);
    stopAndExpectCode(0);
    expectNoMessage();
    std::uint32_t value = 99;
    EXPECT_TRUE(Tavra_GetPreviewImagePixelValue(handle, 1, 1, &value));
    EXPECT_EQ(value, 0u) << "image 0 is the ready one and was never written";
}

struct Drawn {
    std::uint32_t width = 0, height = 0, number = 0, word = 99;
    bool draw = false;
    platform::Event called{platform::Event::Reset::Auto};

    static void callback(TavraDC dc, std::uint32_t width, std::uint32_t height, std::uint32_t number,
                         void* context, std::uint32_t word) {
        auto& drawn = *static_cast<Drawn*>(context);
        drawn.width = width;
        drawn.height = height;
        drawn.number = number;
        drawn.word = word;
        if (drawn.draw) drawn.draw = fillRectangle(dc, {2, 1, 1, 1}, {255, 255, 255});
        drawn.called.set();
    }
};

TEST_F(Callbacks, OfTheGdiKindDrawOnTheImageThatIsPublished) {
    openCamera();
    Drawn drawn;
    drawn.draw = true;
    std::uint32_t identifier = 0;
    ASSERT_TRUE(Tavra_AddPreviewGDICallback(handle, Drawn::callback, &drawn, &identifier));
    start();
    sendFrame(21, pattern(1));
    ASSERT_TRUE(drawn.called.wait(kPatienceMs));
    EXPECT_TRUE(drawn.draw) << "the pixel (2, 1) could be drawn on";
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_FRAME_FINISHED), 21u);
    EXPECT_EQ(record().imagesA.image(1).frameNumber, 21u);
    EXPECT_EQ(drawn.width, 6u);
    EXPECT_EQ(drawn.height, 4u);
    EXPECT_EQ(drawn.number, 21u);
    EXPECT_EQ(drawn.word, 0u);
    std::uint32_t value = 0;
    ASSERT_TRUE(Tavra_GetPreviewImagePixelValue(handle, 2, 1, &value));
    EXPECT_EQ(value, 0xFFFFFFu);
    ASSERT_TRUE(Tavra_GetPreviewImagePixelValue(handle, 1, 0, &value));
    EXPECT_EQ(value, 0x040404u);  // the pattern's second byte
    stopAndExpectCode(0);
}

struct Kinds {
    std::vector<int> order;
    platform::Event done{platform::Event::Reset::Manual};

    static Kinds& of(void* context) { return *static_cast<Kinds*>(context); }
    static void raw(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint16_t,
                    std::uint32_t, void* context, std::uint32_t*) {
        of(context).order.push_back(1);
    }
    static void bitmap(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                       void* context, std::uint32_t*) {
        of(context).order.push_back(2);
    }
    static void gdi(TavraDC, std::uint32_t, std::uint32_t, std::uint32_t, void* context, std::uint32_t) {
        of(context).order.push_back(3);
        of(context).done.set();
    }
};

TEST_F(Callbacks, AreCalledRawThenBitmapThenGdi) {
    openCamera();
    Kinds kinds;
    std::uint32_t identifier = 0;
    ASSERT_TRUE(Tavra_AddPreviewGDICallback(handle, Kinds::gdi, &kinds, &identifier));
    ASSERT_TRUE(Tavra_AddPreviewBitmapCallback(handle, Kinds::bitmap, &kinds, &identifier));
    ASSERT_TRUE(Tavra_AddRawCallback(handle, Kinds::raw, &kinds, &identifier));
    start();
    sendFrame(1, pattern(0));
    ASSERT_TRUE(kinds.done.wait(kPatienceMs));
    ASSERT_TRUE(Tavra_StopTransfer(handle));
    EXPECT_EQ(kinds.order, (std::vector<int>{1, 2, 3}));
}

TEST_F(Callbacks, APixelOfARotatedPreviewIsOfTheExchangedSize) {
    openCamera(1, 1, 6, 4);
    ASSERT_EQ(record().imagesB.shape().width, 4u);
    record().imagesB.image(2).bitmap.pixels()[5 * 4 + 3] = 0x42;
    record().imagesB.publish(2);
    record().displayRotation = 1;
    std::uint32_t value = 0;
    ASSERT_TRUE(Tavra_GetPreviewImagePixelValue(handle, 3, 5, &value));
    EXPECT_EQ(value, 0x424242u);
    ASSERT_TRUE(Tavra_GetPreviewImagePixelValue(handle, 5, 3, &value));
    EXPECT_EQ(value, 0u) << "outside";
    // The display has the image now, so that the capture thread leaves it alone.
    record().imagesB.publish(0);
    EXPECT_EQ(record().imagesB.chooseFree(1), 1u);
}

class PixelValue : public StreamTest, public testing::WithParamInterface<std::uint32_t> {};

TEST_P(PixelValue, HasBlueAboveGreenAboveRed) {
    openCamera(1024, 2, 5, 3);  // B, G, R bytes
    ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, GetParam()));
    Drawn drawn;
    std::uint32_t identifier = 0;
    ASSERT_TRUE(Tavra_AddPreviewGDICallback(handle, Drawn::callback, &drawn, &identifier));
    start();
    const Bytes raw = pattern(10);
    for (std::uint32_t i = 0; i < 5; ++i) {  // so that every image of the set is shown and replaced
        sendFrame(i, raw);
        EXPECT_EQ(expectMessage(TAVRA_MESSAGE_FRAME_FINISHED), i);
        for (std::uint32_t y = 0; y < 3; ++y) {
            for (std::uint32_t x = 0; x < 5; ++x) {
                const std::uint8_t* const pixel = raw.data() + (y * 5 + x) * 3;
                std::uint32_t value = 0;
                ASSERT_TRUE(Tavra_GetPreviewImagePixelValue(handle, x, y, &value));
                EXPECT_EQ(value, static_cast<std::uint32_t>(pixel[0] << 16 | pixel[1] << 8 | pixel[2]));
            }
        }
    }
    std::uint32_t value = 1;
    ASSERT_TRUE(Tavra_GetPreviewImagePixelValue(handle, 5, 0, &value));
    EXPECT_EQ(value, 0u);
    value = 1;
    ASSERT_TRUE(Tavra_GetPreviewImagePixelValue(handle, 0, 3, &value));
    EXPECT_EQ(value, 0u);
    value = 1;
    ASSERT_TRUE(Tavra_GetPreviewImagePixelValue(handle, 0xFFFFFFFF, 0xFFFFFFFF, &value));
    EXPECT_EQ(value, 0u);
    EXPECT_FALSE(Tavra_GetPreviewImagePixelValue(handle, 0, 0, nullptr));
    stopAndExpectCode(0);
}

INSTANTIATE_TEST_SUITE_P(Formats, PixelValue, testing::Values(4u, 8u));

}  // namespace
}  // namespace tavra::test
