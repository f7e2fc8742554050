// How a call goes about the setting file: once each way, and behind whoever else saves to it. Linux.
#include <sys/inotify.h>
#include <unistd.h>

#include "settings_api/setting_file_fixture.h"
#include "support/wait_clock_double.h"

namespace tavra::test {
namespace {

using SettingFile = SettingFileTest;

// What happens to the files of a folder, as letters: o, an opening of the setting file; c, a file that is
// made; w, one that was written; m, one that takes its name.
class FolderWatch {
  public:
    explicit FolderWatch(const std::filesystem::path& folder) : queue_(::inotify_init1(IN_NONBLOCK)) {
        ::inotify_add_watch(queue_, folder.c_str(), IN_OPEN | IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_TO);
    }
    ~FolderWatch() { ::close(queue_); }
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;

    // Since the last look.
    std::string events() const {
        std::string letters;
        alignas(inotify_event) char buffer[4096];
        for (ssize_t got = 0; (got = ::read(queue_, buffer, sizeof buffer)) > 0;) {
            for (const char* at = buffer; at < buffer + got;) {
                const auto* const event = reinterpret_cast<const inotify_event*>(at);
                at += sizeof(inotify_event) + event->len;
                const bool isSettings = event->len > 0 && std::string_view(event->name) == "settings.ini";
                if ((event->mask & IN_OPEN) != 0 && isSettings) letters += 'o';
                if ((event->mask & IN_CREATE) != 0) letters += 'c';
                if ((event->mask & IN_CLOSE_WRITE) != 0) letters += 'w';
                if ((event->mask & IN_MOVED_TO) != 0 && isSettings) letters += 'm';
            }
        }
        return letters;
    }

  private:
    int queue_;
};

// A file on a slow share has more than a thousand keys.
TEST_F(SettingFile, ACallReadsTheFileOnceAndWritesItOnce) {
    open();
    const FolderWatch watch(folder.path());
    save();
    EXPECT_EQ(watch.events(), "cwm") << "there was nothing to read";
    save();
    EXPECT_EQ(watch.events(), "ocwm");
    load();
    EXPECT_EQ(watch.events(), "o");
}

// Another process that is saving to the file is waited for, and only when the camera has been read.
TEST_F(SettingFile, AFileThatSomebodyElseIsSavingIsWaitedForBehindTheCamera) {
    DoubleCamera camera;
    camera.setCapability(3, 7);  // the clamp, near the end of the walk
    open(camera);
    WaitClockDouble clock;
    {
        const platform::FileUpdateLock other(name());
        expectFailure(Tavra_SaveSettingFileW(handle, name().c_str()), 170);
        EXPECT_EQ(clock.waited(), 5000);
        EXPECT_TRUE(folder.isEmpty());
        UsbDouble::Fault fault;
        fault.request = 128;
        fault.value = 21;
        fault.times = UsbDouble::kForever;
        usb.addFault(fault);
        EXPECT_EQ(Tavra_SaveSettingFileW(handle, name().c_str()), 0);
        EXPECT_EQ(clock.waited(), 0) << "the camera had failed by then";
    }
    record().lastError = 0;
    usb.clearFaults();
    save();
}

}  // namespace
}  // namespace tavra::test
