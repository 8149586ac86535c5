#include "tests/support/RefusedCalls.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <system_error>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

namespace ferrivane::test {

std::uint32_t numberOf(Call call) {
    switch (call) {
        case Call::socket:
            return SYS_socket;
        case Call::setOption:
            return SYS_setsockopt;
        case Call::connect:
            return SYS_connect;
        case Call::send:
            return SYS_sendto;
        case Call::shutdown:
            return SYS_shutdown;
        case Call::read:
            return SYS_read;
        case Call::userId:
            return SYS_getuid;
        case Call::lockFile:
            return SYS_flock;
    }
    return 0;
}

void refuse(Call call, int code) {
    std::array<sock_filter, 4> program{{
        {BPF_LD | BPF_W | BPF_ABS, 0, 0, offsetof(seccomp_data, nr)},
        {BPF_JMP | BPF_JEQ | BPF_K, 0, 1, numberOf(call)},
        {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(code)},
        {BPF_RET | BPF_K, 0, 0, SECCOMP_RET_ALLOW},
    }};
    const sock_fprog filter{program.size(), program.data()};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0) {
        throw std::system_error(errno, std::generic_category(), "seccomp");
    }
}

}  // namespace ferrivane::test
