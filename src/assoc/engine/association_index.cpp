#include "assoc/engine/association_index.h"

#include <algorithm>
#include <climits>
#include <fnmatch.h>

namespace dorn {

namespace {

bool is_plain(std::string_view pattern) {
    return pattern.find_first_of("*?[\\") == std::string_view::npos;
}

// ASCII letters alone, as es_strcmp does it.
std::string lowered(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return lower;
}

// Of "*.[ch]" the patterns "*.c" and "*.h", which need no fnmatch; any other one as it is.
std::vector<std::string> alternatives(std::string_view pattern) {
    const std::size_t open = pattern.find('[');
    const std::size_t close = pattern.find(']', open);
    const bool escapes = pattern.find('\\') != std::string_view::npos;
    if (close == std::string_view::npos || escapes) return {std::string(pattern)};
    const std::string_view set = pattern.substr(open + 1, close - open - 1);
    const bool letters = !set.empty() && std::all_of(set.begin(), set.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    });
    if (!letters) return {std::string(pattern)};
    std::vector<std::string> all;
    for (char c : set)
        all.push_back(std::string(pattern.substr(0, open)) + c +
                      std::string(pattern.substr(close + 1)));
    return all;
}

}  // namespace

void AssociationIndex::Half::add(std::string_view pattern, int row) {
    first_row = std::min(first_row, row);
    if (is_plain(pattern))
        names.try_emplace(std::string(pattern), row);
    else if (pattern.starts_with("*.") && is_plain(pattern.substr(1)))
        ends.try_emplace(std::string(pattern.substr(1)), row);
    else
        others.push_back({std::string(pattern), row});
}

int AssociationIndex::Half::find(const std::string& name, int best) const {
    const std::string_view text(name);
    if (const auto found = names.find(text); found != names.end())
        best = std::min(best, found->second);
    for (std::size_t dot = name.find('.'); dot != std::string::npos;
         dot = name.find('.', dot + 1)) {
        if (const auto found = ends.find(text.substr(dot)); found != ends.end())
            best = std::min(best, found->second);
    }
    for (const Pattern& other : others) {
        if (other.row >= best) break;
        if (other.text == "*" || fnmatch(other.text.c_str(), name.c_str(), 0) == 0)
            return other.row;
    }
    return best;
}

AssociationIndex::AssociationIndex() {
    int row = 0;
    for (const Association& association : apat) {
        const bool any_case = association.pattern.starts_with('^');
        const std::string list =
            any_case ? lowered(association.pattern.substr(1)) : association.pattern;
        Half& half = any_case ? any_case_ : exact_;
        std::size_t begin = 0;
        for (std::size_t end = 0; end != std::string::npos; begin = end + 1) {
            end = list.find('|', begin);
            for (const std::string& one :
                 alternatives(std::string_view(list).substr(begin, end - begin)))
                half.add(one, row);
        }
        ++row;
    }
}

int AssociationIndex::find(const char* file_name) const {
    const std::string name(file_name);
    int best = exact_.find(name, INT_MAX);
    if (any_case_.first_row < best) best = any_case_.find(lowered(name), best);
    return best == INT_MAX ? -1 : best;
}

}  // namespace dorn
