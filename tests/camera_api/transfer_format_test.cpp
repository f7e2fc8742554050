// Preview pixel format and transfer bits.
#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

using namespace request;
using TransferFormat = CameraTest;

TEST_F(TransferFormat, PreviewFormatsRebuildTheImages) {
    open();
    for (const auto& [format, bits] : {std::pair{8u, 32u}, {4u, 24u}}) {
        expectSuccess(Tavra_SetPreviewPixelFormat(handle, format));
        std::uint32_t told = 0;
        expectSuccess(Tavra_GetPreviewPixelFormat(handle, &told));
        EXPECT_EQ(told, format);
        EXPECT_EQ(record().imagesA.shape().bitCount, bits);
        EXPECT_EQ(record().imagesB.shape().bitCount, bits);
    }
    for (const std::uint32_t format : {0u, 1u, 2u, 5u, 12u, 16u, 0xFFFFFFFFu}) {
        expectFailure(Tavra_SetPreviewPixelFormat(handle, format), 87);
    }
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(TransferFormat, MonoCamerasHave8BitPreviews) {
    DoubleCamera camera;
    camera.setIdentity16(10, 12);
    open(camera);
    for (const std::uint32_t format : {4u, 8u, 1u})
        expectSuccess(Tavra_SetPreviewPixelFormat(handle, format));
    EXPECT_EQ(record().imagesA.shape().bitCount, 8u);
}

TEST_F(TransferFormat, ACameraWithOneFormatIsNotAsked) {
    open();
    std::uint32_t code = 0;
    expectSuccess(Tavra_GetTransferBitsPerPixel(handle, &code));
    EXPECT_EQ(code, 1u);
    for (const std::uint32_t any : {0u, 1u, 2u, 0xFFFFFFFFu})
        expectSuccess(Tavra_SetTransferBitsPerPixel(handle, any));
    runStream();
    expectSuccess(Tavra_SetTransferBitsPerPixel(handle, 4));
    EXPECT_EQ(record().geometry->transferBits, 1u);
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(TransferFormat, CodesOfTheMaskAreSentAndSizeTheFrame) {
    DoubleCamera camera;
    camera.setIdentity32(18, 0x07337FFF);
    open(camera);
    const struct {
        std::uint32_t code, bits;
    } rows[] = {{1, 8},          {2, 16},        {4, 16},        {8, 16},        {16, 16},
                {32, 8},         {64, 16},       {128, 16},      {256, 16},      {512, 16},
                {1024, 24},      {2048, 32},     {4096, 12},     {8192, 16},     {16384, 24},
                {0x10000, 10},   {0x20000, 12},  {0x100000, 10}, {0x200000, 12}, {0x1000000, 12},
                {0x2000000, 16}, {0x4000000, 24}};
    for (const auto& [code, bits] : rows) {
        expectSuccess(Tavra_SetTransferBitsPerPixel(handle, code));
        Bytes data{6, 0x13};
        for (const std::uint8_t byte : le32(code)) data.push_back(byte);
        EXPECT_THAT(traffic(), ElementsAre(toDevice(19, 0, 0, data), readScan()));
        std::uint32_t told = 0, size = 0;
        expectSuccess(Tavra_GetTransferBitsPerPixel(handle, &told));
        EXPECT_EQ(told, code);
        EXPECT_THAT(traffic(), ElementsAre(readBits()));
        expectSuccess(Tavra_GetRawDataSize(handle, &size));
        EXPECT_EQ(size, 640u * 480u * bits / 8u) << code;
    }
}

TEST_F(TransferFormat, CodesOutsideTheMaskAreABadArgument) {
    DoubleCamera camera;
    camera.setIdentity32(18, 7);
    open(camera);
    for (const std::uint32_t code : {0u, 3u, 7u, 8u, 9u, 0x80000000u}) {
        expectFailure(Tavra_SetTransferBitsPerPixel(handle, code), 87);
    }
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(TransferFormat, AFailingWriteIsToldAfterTheRebuild) {
    DoubleCamera camera;
    camera.setIdentity32(18, 7);
    open(camera);
    usb.failRequest(19, 1);
    expectFailure(Tavra_SetTransferBitsPerPixel(handle, 2), 0xE0000005);
    EXPECT_EQ(traffic().size(), 1u);
    EXPECT_EQ(record().geometry->transferBits, 2u);
    EXPECT_EQ(record().geometry->rawDataSize, 640u * 480u * 2u);
    EXPECT_TRUE(record().buffersExist);
}

TEST_F(TransferFormat, AnAnswerThatIsNotSixBytesIsAFailure) {
    DoubleCamera camera;
    camera.setIdentity32(18, 7);
    open(camera);
    std::uint32_t code = 9;
    for (std::uint32_t length = 0; length < 6; ++length) {
        usb.shortenRequest(19, length, 1);
        expectFailure(Tavra_GetTransferBitsPerPixel(handle, &code), 0xE0000005);
    }
    EXPECT_EQ(code, 9u);
}

TEST_F(TransferFormat, TheBitsInForceAreReadAtOpen) {
    DoubleCamera camera;
    camera.setIdentity32(18, 7);
    camera.transferBits = 4;
    open(camera);
    EXPECT_EQ(record().geometry->transferBits, 4u);
    EXPECT_EQ(record().geometry->rawDataSize, 640u * 480u * 2u);
}

}  // namespace
}  // namespace tavra::test
