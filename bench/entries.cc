// Writes the desktop entries of the measurements: entries FOLDER
#include "bench/Fixtures.h"

int main(int count, char** values) {
    if (count != 2) return 2;
    ferrivane::bench::writeEntries(values[1], ferrivane::bench::kEntries);
    return 0;
}
