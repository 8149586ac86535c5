// Where libFuzzer enters a target.
#include <cstddef>
#include <cstdint>

#include "tests/fuzz/Fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ferrivane::fuzz::run({reinterpret_cast<const char*>(data), size});
    return 0;
}
