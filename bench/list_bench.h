// What a user does in a long list, measured in the real main window.
#pragma once

#include <string>

namespace dorn::bench {

/// Measures each step in `directory` of `count` entries, every other row selected before it.
/// `limit_ms` is what each may take, 0 for no limit.
void measure_list(const std::string& directory, int count, double limit_ms);

/// Sorting by owner with 300 different owners against sorting by name, in the list just measured.
void measure_owner_sort();

}  // namespace dorn::bench
