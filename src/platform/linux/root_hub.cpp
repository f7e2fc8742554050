#include "platform/root_hub.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

constexpr unsigned kHighSpeed = 480;  // Mbit/s
constexpr int kMostAttempts = 5;      // to switch a hub on again
constexpr std::chrono::milliseconds kBetweenAttempts{20};

// A file of a device's folder.
class Attribute {
  public:
    Attribute(const std::string& name, int mode) : descriptor_(::open(name.c_str(), mode | O_CLOEXEC)) {}
    ~Attribute() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    Attribute(const Attribute&) = delete;
    Attribute& operator=(const Attribute&) = delete;

    // The number at its start; 0 if it cannot be read or has none. Fractions are cut off: "1.5" is 1.
    unsigned number() const {
        std::array<char, 16> text{};
        const ssize_t got = descriptor_ >= 0 ? ::read(descriptor_, text.data(), text.size()) : -1;
        unsigned value = 0;
        if (got > 0) std::from_chars(text.data(), text.data() + got, value);
        return value;
    }

    // Whether its text begins with a digit of 0. Not so if it cannot be read.
    bool isOff() const {
        char first = 0;
        return descriptor_ >= 0 && ::read(descriptor_, &first, 1) == 1 && first == '0';
    }

    // False with errno, be it that of the opening.
    bool write(char digit) const { return descriptor_ >= 0 && ::write(descriptor_, &digit, 1) == 1; }

  private:
    int descriptor_;
};

// The number of the bus whose root hub has this name: usb7 is 7.
std::optional<unsigned> busOfRootHub(std::string_view name) {
    constexpr std::string_view kPrefix = "usb";
    if (!name.starts_with(kPrefix)) return std::nullopt;
    unsigned bus = 0;
    const char* const end = name.data() + name.size();
    const auto [last, failed] = std::from_chars(name.data() + kPrefix.size(), end, bus);
    if (failed != std::errc() || last != end) return std::nullopt;
    return bus;
}

// The buses, in rising order. A machine without USB has none.
Status listBuses(const std::string& devicesFolder, std::vector<unsigned>& buses) {
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(devicesFolder.c_str()), &::closedir);
    if (folder == nullptr) return errno == ENOENT ? Status() : failWith(errorFromErrno(errno));
    while (const dirent* const entry = ::readdir(folder.get())) {
        if (const auto bus = busOfRootHub(entry->d_name)) buses.push_back(*bus);
    }
    std::sort(buses.begin(), buses.end());
    return Status();
}

// That a hub is off for a restart, and for nothing else. Where no note can be made there is none to be found
// later: the hub is restarted all the same.
class OffNote {
  public:
    OffNote(const std::string& folder, const std::string& hub) : folder_(folder), name_(folder + "/" + hub) {}

    bool exists() const { return ::access(name_.c_str(), F_OK) == 0; }
    void make() const {
        ::mkdir(folder_.c_str(), 0755);
        const int file = ::open(name_.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0644);
        if (file >= 0) ::close(file);
    }
    void remove() const {
        ::unlink(name_.c_str());
        ::rmdir(folder_.c_str());  // unless another hub has its note in it
    }

  private:
    std::string folder_, name_;
};

// One that stayed off would take its keyboard and its disk with it until somebody pulls the plug.
Status switchOn(const std::string& attribute, const WriteAttribute& write) {
    Status on = write(attribute, '1');
    for (int i = 1; i < kMostAttempts && !on.ok(); ++i) {
        std::this_thread::sleep_for(kBetweenAttempts);
        on = write(attribute, '1');
    }
    return on;
}

// Deauthorised, the hub gives up everything on it; authorised again, it looks for its devices anew.
Status restart(const std::string& attribute, const OffNote& note, const WriteAttribute& write) {
    // Reading must not wait for anybody.
    const bool isOff = Attribute(attribute, O_RDONLY | O_NONBLOCK).isOff();
    if (isOff && !note.exists()) return Status();  // the administrator wants it off
    note.make();
    Status done = isOff ? Status() : write(attribute, '0');
    const bool wasOff = done.ok();
    if (wasOff) done = switchOn(attribute, write);
    if (done.ok() || !wasOff) note.remove();
    return done;
}

}  // namespace

Status writeAttribute(const std::string& name, char digit) {
    const Attribute attribute(name, O_WRONLY);
    return attribute.write(digit) ? Status() : failWith(errorFromErrno(errno));
}

Status resetHighSpeedRootHubs(const RootHubFolders& folders, const WriteAttribute& write) {
    std::vector<unsigned> buses;
    TAVRA_RETURN_IF_ERROR(listBuses(folders.devices, buses));
    Status result;
    for (const unsigned bus : buses) {
        const std::string name = "usb" + std::to_string(bus);
        const std::string hub = folders.devices + "/" + name;
        if (Attribute(hub + "/speed", O_RDONLY).number() < kHighSpeed) continue;
        const Status restarted = restart(hub + "/authorized", OffNote(folders.notes, name), write);
        if (!restarted.ok()) result = restarted;
    }
    return result;
}

Status resetHighSpeedRootHubs() {
    return resetHighSpeedRootHubs(RootHubFolders());
}

}  // namespace tavra::platform
