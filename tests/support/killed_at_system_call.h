// A process that is killed ahead of a system call of its, or behind one: for what has to survive a crash.
// Linux; a test forks, so no other thread may run.
#pragma once

#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace tavra::test {

// Lets a process run `action`, which gives whether it has succeeded, and kills it when it has stopped `stops`
// times: it stops ahead of each system call and behind it. True: it came to its end before.
template <typename Action>
bool endsWithin(int stops, Action action) {
    constexpr int kSucceeded = 42;  // exit code
    const pid_t child = ::fork();
    if (child == 0) {
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        ::raise(SIGSTOP);
        ::_exit(action() ? kSucceeded : 1);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSTOPPED(status));
    for (int i = 0; i < stops; ++i) {
        EXPECT_EQ(::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr), 0);
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        if (WIFEXITED(status)) {
            EXPECT_EQ(WEXITSTATUS(status), kSucceeded);
            return true;
        }
    }
    ::kill(child, SIGKILL);
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return false;
}

}  // namespace tavra::test
