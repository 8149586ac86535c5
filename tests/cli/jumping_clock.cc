// Loaded into a program before its libraries: its wall clock jumps by 1,000 days, to and fro,
// whenever it is looked at. The other clocks stay as they are.
#include <atomic>

#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

namespace {

time_t jump() {
    constexpr time_t kFar = time_t{1000} * 24 * 60 * 60;
    static std::atomic<unsigned> looks = 0;
    return looks++ % 2 == 0 ? kFar : -kFar;
}

}  // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED int clock_gettime(clockid_t clock_id, timespec* tp) noexcept {
    const long result = ::syscall(SYS_clock_gettime, clock_id, tp);
    const bool isWallClock = clock_id == CLOCK_REALTIME || clock_id == CLOCK_REALTIME_COARSE;
    if (result == 0 && isWallClock) tp->tv_sec += jump();
    return static_cast<int>(result);
}

EXPORTED int gettimeofday(timeval* tv, void* tz) noexcept {
    const long result = ::syscall(SYS_gettimeofday, tv, tz);
    if (result == 0) tv->tv_sec += jump();
    return static_cast<int>(result);
}

EXPORTED time_t time(time_t* timer) noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (timer != nullptr) *timer = now.tv_sec;
    return now.tv_sec;
}
