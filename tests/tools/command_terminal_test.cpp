// The command on a terminal, where a line of progress is written over.
#include <pty.h>
#include <unistd.h>

#include <algorithm>

#include "command_fixture.h"

namespace tavra::test {
namespace {

class CommandTerminalTest : public CommandTest {
  protected:
    // What a person's terminal gets; its lines end in "\r\n".
    Outcome runOnTerminal(const std::string& arguments) const {
        const std::string line = "cd '" + folder.path().string() +
                                 "' && exec env -u TAVRA_VIRTUAL_CAMERAS TAVRA_USBD='" + TAVRA_USBD_LIBRARY +
                                 "' '" + TAVRA_COMMAND + "' " + arguments;
        Outcome outcome;
        int terminal = -1;
        const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
        if (child < 0) return outcome;
        if (child == 0) {
            execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
            _exit(127);
        }
        std::array<char, 4096> buffer;
        // The end of the last writer is an error here, not an end of the file.
        for (ssize_t got; (got = read(terminal, buffer.data(), buffer.size())) > 0;) {
            outcome.output.append(buffer.data(), static_cast<std::size_t>(got));
        }
        close(terminal);
        int status = 0;
        waitpid(child, &status, 0);
        outcome.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return outcome;
    }

    // What stands on the screen in the end, line by line, without blanks behind the text.
    static std::vector<std::string> screenOf(const std::string& output) {
        std::vector<std::string> lines(1);
        std::size_t column = 0;
        for (const char sign : output) {
            if (sign == '\r') {
                column = 0;
            } else if (sign == '\n') {
                lines.emplace_back();
            } else {
                std::string& line = lines.back();
                line.resize(std::max(line.size(), column + 1), ' ');
                line[column++] = sign;
            }
        }
        for (std::string& line : lines) line.erase(line.find_last_not_of(' ') + 1);
        return lines;
    }

    static std::size_t linesWith(const std::vector<std::string>& screen, const std::string& part) {
        return static_cast<std::size_t>(
            std::count_if(screen.begin(), screen.end(),
                          [&](const std::string& line) { return line.find(part) != std::string::npos; }));
    }
};

const std::string kCamera = "--virtual bayer:width=64:height=48";

// A line is due each second, and two are shown at least, whatever the machine does meanwhile; lost frames are
// told above it.
TEST_F(CommandTerminalTest, RecordWritesItsProgressOver) {
    const Outcome outcome = runOnTerminal("record " + kCamera + " --seconds 2.5 out.avi");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    const std::vector<std::string> screen = screenOf(outcome.output);
    ASSERT_GE(screen.size(), 3u) << outcome.output;
    EXPECT_EQ(screen.back(), "") << "the shell goes on in a line of its own";
    const std::string& sentence = screen[screen.size() - 2];
    const std::string& live = screen[screen.size() - 3];
    EXPECT_TRUE(sentence.starts_with("out.avi: ")) << sentence;
    for (const char* part : {" s  ", " frames  ", " fps  ", " lost  ", "disk ", " free"}) {
        EXPECT_NE(live.find(part), std::string::npos) << live;
    }
    EXPECT_EQ(linesWith(screen, " fps  "), 1u) << outcome.output;
    EXPECT_EQ(linesWith(screen, "frame"), screen.size() - 1) << "notes of lost frames, and nothing torn";
}

TEST_F(CommandTerminalTest, StreamWritesItsProgressOver) {
    const Outcome outcome = runOnTerminal("stream " + kCamera + " --seconds 2.5");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    const std::vector<std::string> screen = screenOf(outcome.output);
    EXPECT_EQ(linesWith(screen, " fps  "), 1u) << outcome.output;
    EXPECT_EQ(linesWith(screen, " frames in "), 1u) << outcome.output;
}

TEST_F(CommandTerminalTest, APipeGetsALineEachTime) {
    const Outcome outcome = run("record " + kCamera + " --seconds 1.2 out.avi");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_EQ(outcome.output.find('\r'), std::string::npos);
    EXPECT_NE(outcome.output.find(" free"), std::string::npos) << outcome.output;
}

}  // namespace
}  // namespace tavra::test
