// Makes the system refuse a call, for the rest of a process's life: what a full table or a broken
// connection does, without having to bring one about. Linux only.
#pragma once

#include <cstdint>

namespace ferrivane::test {

enum class Call { socket, setOption, connect, send, shutdown, read, userId, lockFile };

// The system's number for it.
std::uint32_t numberOf(Call call);

// Every such call of this process fails with `code` from now on. Only for children.
void refuse(Call call, int code);

}  // namespace ferrivane::test
