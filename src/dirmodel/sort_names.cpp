#include "dirmodel/sort_names.h"

#include <algorithm>
#include <cstring>

namespace dorn {

SortNames::SortNames(Lookup lookup) : lookup_(lookup), slots_(64) {}

std::size_t SortNames::slot_of(uint32_t id) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t slot = (uint64_t{id} * 0x9E3779B97F4A7C15U >> 32) & mask;
    while (slots_[slot].used && slots_[slot].id != id)
        slot = (slot + 1) & mask;
    return slot;
}

void SortNames::grow() {
    const std::vector<Slot> old = std::move(slots_);
    slots_ = std::vector<Slot>(old.size() * 2);
    for (const Slot& slot : old) {
        if (slot.used) slots_[slot_of(slot.id)] = slot;
    }
}

void SortNames::add(uint32_t id) {
    std::size_t slot = slot_of(id);
    if (slots_[slot].used) return;
    if (++count_ * 2 > slots_.size()) {
        grow();
        slot = slot_of(id);
    }
    slots_[slot].id = id;
    slots_[slot].used = true;
    (void)lookup_(id, slots_[slot].name);
}

void SortNames::rank() {
    std::vector<Slot*> order;
    for (Slot& slot : slots_) {
        if (slot.used) order.push_back(&slot);
    }
    const auto before = [](const Slot* a, const Slot* b) {
        return std::strcmp(a->name, b->name) < 0;
    };
    std::sort(order.begin(), order.end(), before);
    int32_t place = 0;
    for (std::size_t i = 0; i < order.size(); ++i) {
        if (i > 0 && before(order[i - 1], order[i])) ++place;
        order[i]->place = place;
    }
}

int32_t SortNames::place(uint32_t id) const {
    return slots_[slot_of(id)].place;
}

}  // namespace dorn
