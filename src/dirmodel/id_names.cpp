// Owner and group names, with a ring of the last ids asked for.
#include "dirmodel/dir_sort.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <grp.h>
#include <pwd.h>

namespace dorn {

namespace {

constexpr int kRingSize = 256;

struct IdName {
    uint32_t id;
    char name[kIdNameSize];
};

struct IdRing {
    std::array<IdName, kRingSize> records;
    int used = 0;
    int head = 0;  // the newest record
};

IdRing sUserCache;
IdRing sGroupCache;
uint64_t sLookups = 0;

const IdName* find_record(const IdRing& ring, uint32_t id) {
    for (int n = 0; n < ring.used; ++n) {
        const IdName& record = ring.records[static_cast<std::size_t>((ring.head + n) % kRingSize)];
        if (record.id == id) return &record;
    }
    return nullptr;
}

IdName& oldest_record(IdRing& ring) {
    ring.head = ring.head == 0 ? kRingSize - 1 : ring.head - 1;
    if (ring.used < kRingSize) ++ring.used;
    return ring.records[static_cast<std::size_t>(ring.head)];
}

const char* user_name(uint32_t id) {
    const passwd* user = getpwuid(id);
    return user == nullptr ? nullptr : user->pw_name;
}

const char* group_name(uint32_t id) {
    const group* found = getgrgid(id);
    return found == nullptr ? nullptr : found->gr_name;
}

int get_name(IdRing& ring, const char* (*ask_system)(uint32_t), uint32_t id, char* buffer) {
    if (const IdName* known = find_record(ring, id)) {
        std::memcpy(buffer, known->name, kIdNameSize);
        return static_cast<int>(std::strlen(buffer));
    }
    ++sLookups;
    IdName found{id, {}};
    int length = 0;
    if (const char* name = ask_system(id)) {
        std::snprintf(found.name, sizeof found.name, "%s", name);
    } else {
        length = std::snprintf(found.name, sizeof found.name, "%u", id);
    }
    oldest_record(ring) = found;
    std::memcpy(buffer, found.name, kIdNameSize);
    return length;
}

}  // namespace

int dir_get_username(uint32_t uid, char buffer[kIdNameSize]) {
    return get_name(sUserCache, user_name, uid, buffer);
}

int dir_get_groupname(uint32_t gid, char buffer[kIdNameSize]) {
    return get_name(sGroupCache, group_name, gid, buffer);
}

uint64_t dir_name_lookups() {
    return sLookups;
}

}  // namespace dorn
