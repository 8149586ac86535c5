// For scripts/check-appkit only: what macOS's C library has and the headers that stand in for it
// there lack. On a Mac these come from <string.h> and <unistd.h>.
#pragma once

#include <stddef.h>
#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

void* memmem(const void* text, size_t size, const void* part, size_t partSize);
int getpeereid(int socket, uid_t* user, gid_t* group);

#ifdef __cplusplus
}
#endif
