#include "progress.h"

#include <unistd.h>

#include <iostream>

namespace tavra::tool {

LiveLine::LiveLine(Purpose purpose)
    : stream_(purpose == Purpose::Result ? std::cout : std::cerr),
      terminal_(isatty(purpose == Purpose::Result ? STDOUT_FILENO : STDERR_FILENO) != 0) {}

void LiveLine::show(const std::string& text) {
    if (!terminal_) {
        stream_ << text << std::endl;
        return;
    }
    const std::size_t blank = shownLength_ > text.size() ? shownLength_ - text.size() : 0;
    stream_ << '\r' << text << std::string(blank, ' ') << std::flush;
    shownLength_ = text.size();
}

void LiveLine::note(const std::string& text) {
    if (terminal_ && shownLength_ > 0) stream_ << '\r' << std::string(shownLength_, ' ') << '\r';
    shownLength_ = 0;
    stream_ << text << std::endl;
}

void LiveLine::finish() {
    if (terminal_ && shownLength_ > 0) stream_ << std::endl;
    shownLength_ = 0;
}

}  // namespace tavra::tool
