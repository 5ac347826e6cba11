// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <csignal>
#include <functional>

#include <grp.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

/// A process that does one piece of work. It ends with this object, and with the test if that is
/// killed.
class ForkedChild
{
public:
    /// user: who does the work; takes effect where the test runs as root. group: its second group.
    explicit ForkedChild(const std::function<void()>& work, uid_t user = 0, gid_t group = 0)
        : parent(getpid())
        , pid(fork())
    {
        if (pid != 0)
            return;
        if (user != 0 && geteuid() == 0 &&
            (setgroups(1, &group) != 0 || setresgid(user, user, user) != 0 ||
             setresuid(user, user, user) != 0))
            _exit(EXIT_FAILURE);
        // After the change of user, which the kernel takes as a reason to forget it.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() == parent)
            work();
        _exit(EXIT_SUCCESS);
    }
    ~ForkedChild()
    {
        if (pid > 0 && kill(pid, SIGKILL) == 0)
            waitpid(pid, nullptr, 0);
    }
    ForkedChild(const ForkedChild&) = delete;
    ForkedChild& operator=(const ForkedChild&) = delete;

    /// Waits for the end of the work; false if it was cut short.
    bool succeeded()
    {
        int status = 0;
        const bool ended = waitpid(pid, &status, 0) == pid && WIFEXITED(status);
        pid = -1;
        return ended && WEXITSTATUS(status) == EXIT_SUCCESS;
    }

private:
    const pid_t parent;
    pid_t pid;
};
