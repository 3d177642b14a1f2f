// Finding the associations of very many names: the table's patterns sorted into what a name can be
// looked up in.
#pragma once

#include "assoc/engine/association.h"

#include <climits>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace dorn {

/// An index of the table `apat` as it is when the index is made.
class AssociationIndex {
  public:
    AssociationIndex();

    /// What _get_pat_idx gives for the name.
    int find(const char* file_name) const;

  private:
    struct Pattern {
        std::string text;
        int row;
    };
    struct Hash : std::hash<std::string_view> {
        using is_transparent = void;
    };
    using Rows = std::unordered_map<std::string, int, Hash, std::equal_to<>>;
    /// The patterns of the rows that tell capitals apart, or those of the rows that don't.
    struct Half {
        Rows names;  // without wildcards; the first row with it
        Rows ends;   // of "*.end" the part from the "." on
        int first_row = INT_MAX;
        std::vector<Pattern> others;  // in the order of the table

        void add(std::string_view pattern, int row);
        /// The first row that matches and comes before `best`, else `best`.
        int find(const std::string& name, int best) const;
    };

    Half exact_;
    Half any_case_;  // all in small letters
};

}  // namespace dorn
