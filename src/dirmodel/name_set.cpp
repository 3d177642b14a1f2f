#include "dirmodel/name_set.h"

#include <functional>

namespace dorn {

bool NameSet::add(std::string_view name, int32_t index, DirEntry* const* entries) {
    if ((count_ + 1) * 2 > slots_.size()) grow();
    const auto hash = static_cast<uint32_t>(std::hash<std::string_view>{}(name));
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    for (; slots_[at].place != 0; at = (at + 1) & mask) {
        if (slots_[at].hash == hash && name == entries[slots_[at].place - 1]->name) return false;
    }
    slots_[at] = {index + 1, hash};
    ++count_;
    return true;
}

void NameSet::grow() {
    const std::vector<Slot> old = std::move(slots_);
    slots_ = std::vector<Slot>(old.size() * 2);
    const std::size_t mask = slots_.size() - 1;
    for (const Slot& slot : old) {
        if (slot.place == 0) continue;
        std::size_t at = slot.hash & mask;
        while (slots_[at].place != 0)
            at = (at + 1) & mask;
        slots_[at] = slot;
    }
}

}  // namespace dorn
