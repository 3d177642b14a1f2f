// The files of one list on the clipboard, shared between the event loop, which packs them, and the
// workers, which take off what they have done. Any thread.
#pragma once

#include "fileops/engine/transfer.h"

#include <mutex>
#include <unordered_map>

namespace dorn {

class ListedFiles {
  public:
    explicit ListedFiles(TransferLists lists);

    bool cut() const {
        return lists_.cut;
    }
    /// Entries that are no local files.
    int foreign() const {
        return lists_.foreign;
    }
    /// Names that are not done with.
    std::size_t left() const;
    /// Whether that name of that directory is left on the list. Always false for a copied one.
    bool has(std::string_view directory, std::string_view name) const;
    /// Takes it off; false when it is not there.
    bool take_off(std::string_view directory, std::string_view name);

    /// The lists without the names that are done with.
    TransferLists copy() const;

    bool packs(const char* type) const;
    std::string pack(const char* type) const;

  private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const {
            return std::hash<std::string_view>()(text);
        }
    };
    // The names of one directory by their text, which is that of lists_.
    using Names = std::unordered_map<std::string_view, std::string*>;

    mutable std::mutex mutex_;
    TransferLists lists_;  // the names change, nothing else
    std::unordered_map<std::string, Names, Hash, std::equal_to<>> index_;  // of a cut list
    std::size_t left_ = 0;
};

}  // namespace dorn
