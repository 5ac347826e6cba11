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
/// killed. Where the test runs as root, the work is done as the given user and group.
class ForkedChild
{
public:
    explicit ForkedChild(const std::function<void()>& work, uid_t user = 0, gid_t group = 0)
        : parent(getpid())
        , pid(fork())
    {
        if (pid != 0)
            return;
        if (geteuid() == 0 && (setgroups(1, &group) != 0 || setresgid(user, user, user) != 0 ||
                               setresuid(user, user, user) != 0))
            _exit(EXIT_FAILURE);
        // After the change of user, with which the kernel forgets it.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() == parent)
            work();
        _exit(EXIT_SUCCESS);
    }
    ~ForkedChild()
    {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }
    ForkedChild(const ForkedChild&) = delete;
    ForkedChild& operator=(const ForkedChild&) = delete;

    /// Waits for the end of the work, which must not have been cut short. The process is still to
    /// be collected afterwards.
    bool succeeded() const
    {
        siginfo_t end{};
        return waitid(P_PID, static_cast<id_t>(pid), &end, WEXITED | WNOWAIT) == 0 &&
               end.si_code == CLD_EXITED && end.si_status == EXIT_SUCCESS;
    }

private:
    const pid_t parent;
    const pid_t pid;
};
