// Names of movies in the system code page, with characters that ASCII does not have.
#include <optional>
#include <string>
#include <vector>

#include "media/movie/smf_builder.h"
#include "media_api/recording_fixture.h"
#include "platform/text.h"

namespace tavra::test {
namespace {

class NarrowMovieName : public RecordingTest {
  protected:
    struct Name {
        std::filesystem::path path;
        std::string narrow;
    };

    // Nothing where the code page lacks a character.
    std::optional<Name> named(const std::u16string& file) const {
        const std::filesystem::path path = folder.path() / file;
        const std::string narrow = platform::toNarrow(path.u16string());
        if (platform::toWide(narrow) != path.u16string()) return std::nullopt;
        return Name{path, narrow};
    }
    // Every code page in use has the first; UTF-8 has them all.
    std::vector<Name> namesWith(const std::u16string& extension) const {
        std::vector<Name> names;
        for (const char16_t* stem : {u"Gr\u00F6\u00DFe \u00E9", u"\u03B1\u03B2", u"\u65E5\u672C\u8A9E",
                                     u"\u0436.\u0438", u"\U0001F3A5"}) {
            if (const std::optional<Name> name = named(stem + extension)) names.push_back(*name);
        }
        return names;
    }
    static SmfBuilder twoFrames() {
        SmfBuilder builder(4, 2, 8);
        builder.addFrame(0, 1, Bytes(8, 1));
        builder.addFrame(1, 1, Bytes(8, 2));
        return builder;
    }
};

TEST_F(NarrowMovieName, IsThatOfTheRecordedFile) {
    openCamera();
    const std::vector<Name> names = namesWith(u".smf");
    if (names.empty()) GTEST_SKIP() << "a code page of ASCII alone";
    for (const Name& name : names) {
        SCOPED_TRACE(name.narrow);
        ASSERT_EQ(Tavra_SaveAVIA(handle, name.narrow.c_str(), 0x20202020, 5), 1) << lastError();
        ASSERT_EQ(Tavra_StopTransfer(handle), 1);
        EXPECT_EQ(readRawMovie(readFile(name.path)).field(40), 0x20202020u);
    }
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        EXPECT_EQ(entry.path().extension(), ".smf");
        ++files;
    }
    EXPECT_EQ(files, names.size()) << "and no other";
}

TEST_F(NarrowMovieName, OpensARawMovieAndNamesItsDevelopment) {
    const std::vector<Name> movies = namesWith(u".smf"), developed = namesWith(u".avi");
    if (movies.empty()) GTEST_SKIP() << "a code page of ASCII alone";
    for (std::size_t i = 0; i < movies.size(); ++i) {
        SCOPED_TRACE(movies[i].narrow);
        twoFrames().write(movies[i].path);
        const TavraSmfHandle reader = Tavra_SMFOpenFileA(movies[i].narrow.c_str());
        ASSERT_NE(reader, nullptr);
        std::uint32_t count = 0;
        EXPECT_EQ(Tavra_GetSMFFileInfo(reader, &count, nullptr), 1);
        EXPECT_EQ(count, 2u);
        EXPECT_EQ(Tavra_SMF2AVIA(reader, developed[i].narrow.c_str(), 0, nullptr, nullptr, nullptr), 1);
        Tavra_SMFCloseFile(reader);
        // The chunk that leads, two frames of 8 bytes, and the index.
        EXPECT_EQ(readFile(developed[i].path).size(), 4096u + 8 + 2 * (8 + 8) + 8 + 3 * 16);
    }
}

// The place that a name is converted into has 260 wide characters, whatever the bytes of the narrow one are.
TEST_F(NarrowMovieName, IsMeasuredInWideCharacters) {
    const std::size_t folderLength = folder.path().u16string().size() + 1;
    constexpr std::size_t kLongest = 259, kExtension = 4;
    ASSERT_LT(folderLength, kLongest - kExtension - 100) << "a temporary folder of so long a name";
    const std::size_t room = kLongest - folderLength - kExtension;
    // Names of files have up to 255 bytes on many systems, so that folders take the rest.
    const auto deepName = [&](std::size_t characters) {
        std::u16string name;
        while (characters > 101) {
            name += std::u16string(100, u'\u00E9') + u'/';
            characters -= 101;
        }
        return name + std::u16string(characters, u'\u00E9') + u".smf";
    };
    const std::optional<Name> longest = named(deepName(room)), tooLong = named(deepName(room + 1));
    if (!longest || !tooLong) GTEST_SKIP() << "a code page of ASCII alone";
    std::filesystem::create_directories(longest->path.parent_path());
    std::filesystem::create_directories(tooLong->path.parent_path());
    openCamera();
    ASSERT_EQ(Tavra_SaveAVIA(handle, longest->narrow.c_str(), 0, 5), 1) << lastError();
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_EQ(readRawMovie(readFile(longest->path)).field(44), 5u);
    expectFailure(Tavra_SaveAVIA(handle, tooLong->narrow.c_str(), 0, 5), 0xE000000F);

    const TavraSmfHandle reader = Tavra_SMFOpenFileA(longest->narrow.c_str());
    EXPECT_NE(reader, nullptr);
    Tavra_SMFCloseFile(reader);
    twoFrames().write(tooLong->path);
    EXPECT_EQ(Tavra_SMFOpenFileA(tooLong->narrow.c_str()), nullptr);
}

}  // namespace
}  // namespace tavra::test
