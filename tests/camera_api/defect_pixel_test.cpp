// Defect pixels: the camera's list and mode, and the search that fills the list.
#include <algorithm>
#include <random>

#include "camera_api/camera_fixture.h"
#include "support/failing_allocations.h"

namespace tavra::test {
namespace {

using namespace request;

constexpr std::uint32_t kFree = 0xFFFF;

struct Position {
    std::uint32_t x = kFree, y = kFree;

    bool operator==(const Position&) const = default;
};

void PrintTo(const Position& position, std::ostream* out) {
    *out << '(' << position.x << ", " << position.y << ')';
}

DoubleCamera withCorrection(DoubleCamera camera, std::uint16_t capacity = 0) {
    camera.setCapability(3, 11);
    camera.setCapabilityWord(5, capacity);
    return camera;
}

class DefectPixels : public CameraTest {
  protected:
    void openWords(std::uint16_t capacity = 0) { open(withCorrection(DoubleCamera(), capacity)); }
    void openPages(std::uint16_t capacity = 0) { open(withCorrection(pageCamera(), capacity)); }

    std::uint16_t capacity() {
        std::uint16_t count = 0xEEEE;
        EXPECT_EQ(Tavra_GetEnableDefectPixelCorrectionCount(handle, &count), 1);
        return count;
    }
    std::vector<Position> list() {
        std::vector<Position> positions(capacity());
        for (std::size_t i = 0; i < positions.size(); ++i) {
            EXPECT_EQ(Tavra_GetDefectPixelCorrectionPosition(handle, static_cast<std::uint16_t>(i),
                                                             &positions[i].x, &positions[i].y),
                      1);
        }
        usb.forgetTraffic();
        return positions;
    }
    TavraBool detect(const Bytes& image, std::uint32_t width, std::uint16_t threshold) {
        const auto height = static_cast<std::uint32_t>(image.size() / width);
        return Tavra_DetectDefectPixel(handle, width, height, image.data(), threshold);
    }
};

ControlTransfer writeEntry(std::uint16_t address, std::uint32_t x, std::uint32_t y) {
    Bytes data = le16(x);
    for (const std::uint8_t byte : le16(y)) data.push_back(byte);
    return writeStatus(address, data, 129);
}

// What the camera can

TEST_F(DefectPixels, ACameraTellsHowManyItCorrects) {
    openWords(0);
    EXPECT_EQ(capacity(), 64) << "0 stands for 64";
    for (const std::uint16_t told : {1, 63, 1000, 0xFFFF}) {
        close();
        usb.reset();
        openWords(told);
        EXPECT_EQ(capacity(), told);
        EXPECT_THAT(traffic(), IsEmpty());
    }
}

class WithoutCorrection : public DefectPixels, public testing::WithParamInterface<int> {
  protected:
    void SetUp() override {
        DoubleCamera camera;
        if (GetParam() == 1) camera = pageCamera();
        if (GetParam() >= 2) camera = legacyCamera(static_cast<std::uint16_t>(GetParam()));
        camera.setCapabilityWord(5, 100);
        if (GetParam() >= 2) camera.setCapability(3, 11);
        open(camera);
    }
};

TEST_P(WithoutCorrection, NumbersAreZeroAndTheRestIsABadArgument) {
    EXPECT_EQ(capacity(), 0);
    std::uint16_t mode = 7;
    expectSuccess(Tavra_GetDefectPixelCorrectionMode(handle, &mode));
    EXPECT_EQ(mode, 0);
    expectFailure(Tavra_SetDefectPixelCorrectionMode(handle, 1), 87);
    expectFailure(Tavra_SetDefectPixelCorrectionPosition(handle, 0, 1, 2), 87);
    std::uint32_t x = 7, y = 8;
    expectFailure(Tavra_GetDefectPixelCorrectionPosition(handle, 0, &x, &y), 87);
    EXPECT_EQ(x, 7u);
    EXPECT_EQ(y, 8u);
    const Bytes image(4, 255);
    expectFailure(Tavra_DetectDefectPixel(handle, 2, 2, image.data(), 1), 87);
    EXPECT_THAT(traffic(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Cameras, WithoutCorrection, testing::Values(0, 1, 773, 1541, 1797, 2053));

// Mode

TEST_F(DefectPixels, TheModeIsAStatusWordOnEveryCamera) {
    for (const bool pages : {false, true}) {
        usb.reset();
        pages ? openPages() : openWords();
        expectSuccess(Tavra_SetDefectPixelCorrectionMode(handle, 0xABCD));
        EXPECT_THAT(traffic(), ElementsAre(writeStatus(32846, {0xCD, 0xAB})));
        usb.camera().status(78) = 0x1234;
        std::uint16_t mode = 0;
        expectSuccess(Tavra_GetDefectPixelCorrectionMode(handle, &mode));
        EXPECT_EQ(mode, 0x1234);
        EXPECT_THAT(traffic(), ElementsAre(readStatus(78)));
        close();
    }
}

TEST_F(DefectPixels, AModeThatDoesNotTravelIsAFailedTransfer) {
    openWords();
    std::uint16_t mode = 7;
    usb.failTransfer(0);
    expectFailure(Tavra_GetDefectPixelCorrectionMode(handle, &mode), 0xE0000005);
    usb.shortenRequest(128, 1, 1);
    expectFailure(Tavra_GetDefectPixelCorrectionMode(handle, &mode), 0xE0000005);
    EXPECT_EQ(mode, 7);
    usb.failTransfer(0);
    expectFailure(Tavra_SetDefectPixelCorrectionMode(handle, 1), 0xE0000005);
}

// Entries

TEST_F(DefectPixels, AnEntryIsTwoStatusWords) {
    openWords();
    expectSuccess(Tavra_SetDefectPixelCorrectionPosition(handle, 3, 0x1234, 0x5678));
    EXPECT_THAT(traffic(), ElementsAre(writeEntry(0x8006, 0x1234, 0x5678)));
    std::uint32_t x = 0, y = 0;
    expectSuccess(Tavra_GetDefectPixelCorrectionPosition(handle, 3, &x, &y));
    EXPECT_EQ(x, 0x1234u);
    EXPECT_EQ(y, 0x5678u);
    EXPECT_THAT(traffic(), ElementsAre(readStatus(6, 2, 129)));
}

TEST_F(DefectPixels, AnEntryIsOneRegisterOfThePages) {
    openPages();
    expectSuccess(Tavra_SetDefectPixelCorrectionPosition(handle, 3, 0x1234, 0x5678));
    EXPECT_THAT(traffic(), ElementsAre(writePage(18, 16, 0x56781234)));
    usb.camera().pageRegister(18, 4) = 0xFFFF0001;
    std::uint32_t x = 0, y = 0;
    expectSuccess(Tavra_GetDefectPixelCorrectionPosition(handle, 0, &x, &y));
    EXPECT_EQ(x, 1u);
    EXPECT_EQ(y, 0xFFFFu);
    EXPECT_THAT(traffic(), ElementsAre(readPage(18, 4)));
}

TEST_F(DefectPixels, SixteenBitsOfAPositionTravel) {
    openWords();
    expectSuccess(Tavra_SetDefectPixelCorrectionPosition(handle, 0, 0x10002, 0xFFFF0003));
    EXPECT_THAT(traffic(), ElementsAre(writeEntry(0x8000, 2, 3)));
    close();
    usb.reset();
    openPages();
    expectSuccess(Tavra_SetDefectPixelCorrectionPosition(handle, 0, 0x10002, 0xFFFF0003));
    EXPECT_THAT(traffic(), ElementsAre(writePage(18, 4, 0x00030002)));
}

TEST_F(DefectPixels, AnIndexMustBeBelowTheLengthOfTheList) {
    for (const bool pages : {false, true}) {
        usb.reset();
        pages ? openPages(10) : openWords(10);
        std::uint32_t x = 7, y = 8;
        for (const std::uint16_t index : {10, 11, 64, 0xFFFF}) {
            expectFailure(Tavra_SetDefectPixelCorrectionPosition(handle, index, 1, 2), 87);
            expectFailure(Tavra_GetDefectPixelCorrectionPosition(handle, index, &x, &y), 87);
        }
        EXPECT_EQ(x, 7u);
        EXPECT_EQ(y, 8u);
        EXPECT_THAT(traffic(), IsEmpty());
        expectSuccess(Tavra_SetDefectPixelCorrectionPosition(handle, 9, 1, 2));
        expectSuccess(Tavra_GetDefectPixelCorrectionPosition(handle, 9, &x, &y));
        EXPECT_EQ(x, 1u);
        close();
    }
}

TEST_F(DefectPixels, AddressesOfALongListAreCutToSixteenBits) {
    openWords(0xFFFF);
    std::uint32_t x = 0, y = 0;
    for (const std::uint16_t index : {0x3FFF, 0x4000, 0x7FFF, 0x8001, 0xFFFE}) {
        expectSuccess(Tavra_SetDefectPixelCorrectionPosition(handle, index, 1, 2));
        expectSuccess(Tavra_GetDefectPixelCorrectionPosition(handle, index, &x, &y));
    }
    EXPECT_THAT(traffic(),
                ElementsAre(writeEntry(0xFFFE, 1, 2), readStatus(0x7FFE, 2, 129), writeEntry(0x8000, 1, 2),
                            readStatus(0x8000, 2, 129), writeEntry(0xFFFE, 1, 2), readStatus(0xFFFE, 2, 129),
                            writeEntry(0x8002, 1, 2), readStatus(0x0002, 2, 129), writeEntry(0xFFFC, 1, 2),
                            readStatus(0xFFFC, 2, 129)));
}

TEST_F(DefectPixels, AListThatIsLongerThanItsPageEndsWithThePage) {
    DoubleCamera camera = withCorrection(DoubleCamera(), 64);
    camera.addRegisterPages(0x20);
    open(camera);
    expectSuccess(Tavra_SetDefectPixelCorrectionPosition(handle, 6, 1, 2));
    expectFailure(Tavra_SetDefectPixelCorrectionPosition(handle, 7, 1, 2), 87);
    std::uint32_t x = 7, y = 7;
    expectFailure(Tavra_GetDefectPixelCorrectionPosition(handle, 7, &x, &y), 87);
    EXPECT_EQ(x, 7u);
}

TEST_F(DefectPixels, AnEntryThatDoesNotTravelIsAFailedTransfer) {
    for (const bool pages : {false, true}) {
        usb.reset();
        pages ? openPages() : openWords();
        std::uint32_t x = 7, y = 8;
        usb.failTransfer(0);
        expectFailure(Tavra_SetDefectPixelCorrectionPosition(handle, 0, 1, 2), 0xE0000005);
        usb.failTransfer(0);
        expectFailure(Tavra_GetDefectPixelCorrectionPosition(handle, 0, &x, &y), 0xE0000005);
        usb.shortenRequest(pages ? 130 : 128, 3, 1);
        expectFailure(Tavra_GetDefectPixelCorrectionPosition(handle, 0, &x, &y), 0xE0000005);
        EXPECT_EQ(x, 7u);
        EXPECT_EQ(y, 8u);
        close();
    }
}

TEST_F(DefectPixels, ResultsNeedAPlace) {
    openWords();
    std::uint32_t x = 0;
    expectFailure(Tavra_GetDefectPixelCorrectionPosition(handle, 0, &x, nullptr), 87);
    expectFailure(Tavra_GetDefectPixelCorrectionPosition(handle, 0, nullptr, &x), 87);
    expectFailure(Tavra_GetDefectPixelCorrectionMode(handle, nullptr), 87);
    expectFailure(Tavra_GetEnableDefectPixelCorrectionCount(handle, nullptr), 87);
    EXPECT_THAT(traffic(), IsEmpty());
}

// Detection

TEST_F(DefectPixels, ADarkImageClearsTheList) {
    openWords(3);
    expectSuccess(Tavra_SetDefectPixelCorrectionPosition(handle, 1, 5, 6));
    traffic();
    expectSuccess(detect(Bytes(12, 9), 4, 10));
    EXPECT_THAT(traffic(), ElementsAre(writeEntry(0x8000, kFree, kFree), writeEntry(0x8002, kFree, kFree),
                                       writeEntry(0x8004, kFree, kFree), apply()));
}

TEST_F(DefectPixels, WhatIsFoundIsWrittenInTheOrderOfRowsAndTakenOver) {
    openPages(3);
    expectSuccess(detect({0, 0, 10, 0,  //
                          9, 0, 0, 255},
                         4, 10));
    EXPECT_THAT(traffic(), ElementsAre(writePage(18, 4, 0x00000002), writePage(18, 8, 0x00010003),
                                       writePage(18, 12, 0xFFFFFFFF), apply()));
}

TEST_F(DefectPixels, AtThresholdZeroTheFirstPixelsFillTheList) {
    openWords();
    Bytes image(100, 0);
    expectSuccess(detect(image, 10, 0));
    const std::vector<Position> all = list();
    ASSERT_EQ(all.size(), 64u);
    for (std::uint32_t i = 0; i < 64; ++i) EXPECT_EQ(all[i], (Position{i % 10, i / 10})) << i;
    image[80] = 1;
    expectSuccess(detect(image, 10, 0));
    const std::vector<Position> moved = list();
    EXPECT_EQ(moved[0], (Position{1, 0})) << "the first of the dimmest went";
    EXPECT_EQ(moved[62], (Position{3, 6}));
    EXPECT_EQ(moved[63], (Position{0, 8}));
}

TEST_F(DefectPixels, OfEqualPixelsTheFirstStay) {
    openWords();
    expectSuccess(detect(Bytes(65, 200), 65, 100));
    const std::vector<Position> all = list();
    for (std::uint32_t i = 0; i < 64; ++i) EXPECT_EQ(all[i], (Position{i, 0})) << i;
}

TEST_F(DefectPixels, ABrighterPixelTakesThePlaceOfTheFirstOfTheDimmest) {
    openWords(3);
    expectSuccess(detect({20, 10, 10, 30}, 4, 5));
    EXPECT_THAT(list(), ElementsAre(Position{0, 0}, Position{2, 0}, Position{3, 0}));
    expectSuccess(detect({20, 10, 10, 30, 10, 15}, 6, 5));
    EXPECT_THAT(list(), ElementsAre(Position{0, 0}, Position{3, 0}, Position{5, 0}))
        << "a tie with the dimmest replaces nothing";
    expectSuccess(detect({20, 10, 10, 30, 25, 255}, 6, 5));
    EXPECT_THAT(list(), ElementsAre(Position{3, 0}, Position{4, 0}, Position{5, 0}));
}

TEST_F(DefectPixels, AThresholdThatNoPixelReachesFindsNothing) {
    openWords(2);
    for (const std::uint16_t threshold : {256, 0xFFFF}) {
        expectSuccess(detect(Bytes(9, 255), 3, threshold));
        EXPECT_THAT(list(), ElementsAre(Position{}, Position{}));
    }
    expectSuccess(detect(Bytes(1, 255), 1, 255));
    EXPECT_THAT(list(), ElementsAre(Position{0, 0}, Position{}));
}

TEST_F(DefectPixels, AnImageWithoutPixelsIsDark) {
    openWords(1);
    for (const auto& [width, height] : {std::pair{0u, 0u}, {0u, 0xFFFFFFFFu}, {0xFFFFFFFFu, 0u}}) {
        expectSuccess(Tavra_DetectDefectPixel(handle, width, height, nullptr, 0));
        EXPECT_THAT(traffic(), ElementsAre(writeEntry(0x8000, kFree, kFree), apply()));
    }
    expectFailure(Tavra_DetectDefectPixel(handle, 1, 1, nullptr, 0), 87);
    EXPECT_THAT(traffic(), IsEmpty());
}

struct Found {
    Position at;
    unsigned value;
};

// Step by step, with the level of the dimmest kept beside the list.
std::vector<Position> foundPlainly(const Bytes& image, std::uint32_t width, unsigned threshold,
                                   std::size_t places) {
    std::vector<Found> found;
    unsigned low = 65535;
    for (std::size_t i = 0; i < image.size(); ++i) {
        const Found sample{{static_cast<std::uint32_t>(i % width), static_cast<std::uint32_t>(i / width)},
                           image[i]};
        if (sample.value < threshold) continue;
        if (found.size() == places) {
            if (sample.value <= low) continue;
            std::size_t leaving = 0;
            while (found[leaving].value > low) ++leaving;
            found.erase(found.begin() + static_cast<std::ptrdiff_t>(leaving));
            low = 65535;
            for (const Found& remaining : found) low = std::min(low, remaining.value);
        }
        found.push_back(sample);
        low = std::min(low, sample.value);
    }
    std::vector<Position> positions(places);
    for (std::size_t i = 0; i < found.size(); ++i) positions[i] = found[i].at;
    return positions;
}

TEST_F(DefectPixels, AgreesWithAPlainSearch) {
    std::mt19937 random(11);
    for (const std::uint16_t places : {1, 2, 5, 64}) {
        usb.reset();
        openWords(places);
        for (int round = 0; round < 30; ++round) {
            const auto width = static_cast<std::uint32_t>(1 + random() % 20);
            const unsigned levels = 2 + random() % 254;
            Bytes image(width * (1 + random() % 20));
            for (std::uint8_t& sample : image) sample = static_cast<std::uint8_t>(random() % levels);
            const auto threshold = static_cast<std::uint16_t>(random() % levels);
            expectSuccess(detect(image, width, threshold));
            ASSERT_EQ(list(), foundPlainly(image, width, threshold, places)) << places << ", " << round;
        }
        close();
    }
}

TEST_F(DefectPixels, AFailingEntryEndsTheWritesAndTheRestIsTakenOver) {
    for (const bool pages : {false, true}) {
        usb.reset();
        pages ? openPages(4) : openWords(4);
        usb.failTransfer(1);
        EXPECT_EQ(detect(Bytes(4, 100), 4, 50), 1) << "that it is taken over is the result";
        EXPECT_EQ(lastError(), 0xE0000005u);
        const Traffic requests = traffic();
        ASSERT_EQ(requests.size(), 3u);
        EXPECT_EQ(requests[2], apply());
        record().lastError = 0;
        close();
    }
}

TEST_F(DefectPixels, AListThatIsNotTakenOverIsAFailure) {
    openWords(2);
    usb.failTransfer(2);
    expectFailure(detect(Bytes(4, 100), 4, 50), 0xE0000005);
    EXPECT_EQ(traffic().size(), 3u);
    usb.failRequest(128);
    expectFailure(detect(Bytes(4, 100), 4, 50), 0xE0000005);
    EXPECT_EQ(traffic().size(), 2u);
}

TEST_F(DefectPixels, AListLongerThanItsPageIsWrittenAsFarAsThePageGoes) {
    DoubleCamera camera = withCorrection(DoubleCamera(), 64);
    camera.addRegisterPages(0x20);
    open(camera);
    EXPECT_EQ(detect(Bytes(64, 100), 8, 50), 1);
    EXPECT_EQ(lastError(), 87u);
    EXPECT_EQ(traffic().size(), 8u) << "seven entries, and what takes them over";
    record().lastError = 0;
}

TEST_F(DefectPixels, WithoutMemoryNothingIsWritten) {
    openWords(0xFFFF);
    TavraBool result = 1;
    const Bytes image(4, 100);
    {
        const FailAllocationsFrom large(100000);
        result = Tavra_DetectDefectPixel(handle, 2, 2, image.data(), 1);
    }
    expectFailure(result, 8);
    EXPECT_THAT(traffic(), IsEmpty());
}

}  // namespace
}  // namespace tavra::test
