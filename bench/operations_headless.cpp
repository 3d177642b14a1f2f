// One copy, move or delete by the program's worker, without a screen.
//
//     operations_headless copy|move|delete DIRECTORY NAME [DESTINATION]
//
// Prints the milliseconds that it took, and the bytes of memory that it held when the first entry
// was done (a delete: after the scan).
#include "support/operation.h"

#include <cstdio>
#include <cstring>
#include <malloc.h>

namespace {

using namespace dorn;

std::size_t sHeld = 0;

std::size_t held() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

int note_first(const char*, const char*) {
    if (sHeld == 0) sHeld = held();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        std::fputs("usage: operations_headless copy|move|delete DIRECTORY NAME [DESTINATION]\n",
                   stderr);
        return 2;
    }
    const int32_t kind = std::strcmp(argv[1], "copy") == 0   ? kFopCopy
                         : std::strcmp(argv[1], "move") == 0 ? kFopMove
                                                             : kFopDelete;
    const std::size_t before = held();
    const double ms = run_operation(
        {kind, argv[2], {argv[3]}, argc > 4 ? argv[4] : "", kFopLinksAsLinks, note_first});
    std::printf("%f %zu\n", ms, sHeld == 0 ? 0 : sHeld - before);
    return ms < 0 ? 1 : 0;
}
