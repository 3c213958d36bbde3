#pragma once

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <vector>

namespace Player::Testing {

/// Exit status of a test body for which the system allows no hiding of calls.
constexpr int kCannotHide = 77;

/// Makes these system calls fail with `aErrno` in this process, for good: meant for the child of a death test.
inline void HideCalls(std::initializer_list<long> aCalls, int aErrno) {
    std::vector<sock_filter> lFilter = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
    for (const long lCall : aCalls) {
        lFilter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(lCall), 0, 1));
        lFilter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(aErrno)));
    }
    lFilter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog lProgram{static_cast<unsigned short>(lFilter.size()), lFilter.data()};
    if (0 != prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) ||
        0 != prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &lProgram, 0, 0)) {
        std::_Exit(kCannotHide);
    }
}

/// Runs `aBody` with its expectations in a process of its own.
template <typename Body>
void ExpectPassesInChild(Body aBody) {
    bool lIsHidden = true;
    const auto lIsFine = [&lIsHidden](int aStatus) {
        lIsHidden = !testing::ExitedWithCode(kCannotHide)(aStatus);
        return !lIsHidden || testing::ExitedWithCode(0)(aStatus);
    };
    EXPECT_EXIT(
        {
            aBody();
            std::_Exit(testing::Test::HasFailure() ? 1 : 0);
        },
        lIsFine, "");
    if (!lIsHidden) { GTEST_SKIP() << "this machine lets no process hide calls of the system from itself"; }
}

}  // namespace Player::Testing
