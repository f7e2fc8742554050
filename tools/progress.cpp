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
    const std::size_t blank = shown_.size() > text.size() ? shown_.size() - text.size() : 0;
    stream_ << '\r' << text << std::string(blank, ' ') << std::flush;
    shown_ = text;
}

void LiveLine::note(const std::string& text) {
    if (!shown_.empty()) stream_ << '\r' << std::string(shown_.size(), ' ') << '\r';
    stream_ << text << '\n' << shown_ << std::flush;
}

void LiveLine::finish() {
    if (!shown_.empty()) stream_ << std::endl;
    shown_.clear();
}

}  // namespace tavra::tool
