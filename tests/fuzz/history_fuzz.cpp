// Arbitrary bytes as a history file, and uses of its entries afterwards.
#include "config/history.h"

#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto list = dorn::cl_parse(bytes);
    for (size_t n = 0; n < size && n < 64; ++n) {
        const char* entry = dorn::cl_get(list.get(), data[n] % 24);
        const std::string text =
            entry == nullptr ? std::string(1, static_cast<char>(data[n])) : entry;
        dorn::cl_add(list.get(), text.c_str());
        if (std::strcmp(dorn::cl_get(list.get(), 1), text.c_str()) != 0) std::abort();
        dorn::cl_find_pattern(list.get(), text.c_str());
    }
    if (list->count < 0 || list->count > dorn::kHistorySlots) std::abort();
    if (list->head < 0 || list->head >= dorn::kHistorySlots) std::abort();
    return 0;
}
