#include "filelist/transfer.h"

#include "filelist/pane.h"

namespace dorn {

std::unique_ptr<FileTransfer> fl_pack_transf() {
    const DirCache& cache = fl_cache();
    one_dir_packed = cache.n_selected == 1 && cache.n_selected_dirs == 1;
    if (cache.n_selected <= 0) return nullptr;
    auto record = std::make_unique<FileTransfer>();
    record->directory = cache.path;
    record->names.reserve(static_cast<std::size_t>(cache.n_selected));
    for (int32_t i = 0; i < cache.count; ++i) {
        if ((cache.entries[i]->flags & kEntrySelected) != 0)
            record->names.emplace_back(cache.entries[i]->name);
    }
    return record;
}

void fl_free_transf(std::unique_ptr<FileTransfer> record) {
    record.reset();
}

}  // namespace dorn
