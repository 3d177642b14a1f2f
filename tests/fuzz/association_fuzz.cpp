// Arbitrary association files: what is read is written and read back the same, in lines that the
// reader takes whole.
#include "assoc/engine/association.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace {

using dorn::Association;

bool same(const Association& a, const Association& b) {
    return a.pattern == b.pattern && a.open == b.open && a.edit == b.edit && a.view == b.view;
}

// A row that a comment or a longer line would be made of is one that the editor refuses.
bool can_be_written(const Association& row) {
    const std::size_t length =
        row.pattern.size() + row.open.size() + row.edit.size() + row.view.size() + 4;
    return length <= dorn::kAssocLineSize && !row.pattern.starts_with('#');
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view content(reinterpret_cast<const char*>(data), size);
    std::vector<Association> rows;
    dorn::assoc_parse(content, &rows);
    for (const Association& row : rows) {
        const std::string fields[] = {row.pattern, row.open, row.edit, row.view};
        for (const std::string& field : fields) {
            if (field.find_first_of(std::string_view("\t\n\0", 3)) != std::string::npos)
                std::abort();
        }
    }
    std::erase_if(rows, [](const Association& row) { return !can_be_written(row); });
    std::vector<Association> again;
    if (dorn::assoc_parse(dorn::assoc_format(rows), &again) != 0) std::abort();
    if (!std::equal(rows.begin(), rows.end(), again.begin(), again.end(), same)) std::abort();
    return 0;
}
