#include "assoc/row_text.h"

#include <string_view>

namespace dorn {

namespace {

constexpr std::size_t kLongestText = kAssocLineSize - 1;  // beside its newline
constexpr std::size_t kTabs = 3;

bool is_blank(const std::string& command) {
    return isempty(command.c_str()) == 1;
}

bool has_any(const std::string& text, std::string_view bytes) {
    return text.find_first_of(bytes) != std::string::npos;
}

}  // namespace

std::string row_text(const Association& row) {
    std::string text = row.pattern;
    for (const std::string* command : {&row.open, &row.view, &row.edit}) {
        text += '\t';
        if (!is_blank(*command)) text += *command;
    }
    return text;
}

Association row_of_text(const std::string& text) {
    const std::vector<std::string> column = _split_str(text, '\t', 4);
    return {column[0], column[1], column[3], column[2]};
}

RowRefusal row_too_long(const std::string& text) {
    if (text.size() <= kLongestText) return {};
    return {"Pattern and commands together cannot be over " + std::to_string(kLongestText - kTabs) +
                " bytes",
            RowField::Pattern};
}

RowRefusal row_refusal(const Association& entered) {
    using namespace std::literals;
    if (entered.pattern.empty() || has_any(entered.pattern, "\t"))
        return {"Pattern cannot have TABs", RowField::Pattern};
    if (is_blank(entered.open) && is_blank(entered.view) && is_blank(entered.edit))
        return {"No actions added for Open, View or Edit", RowField::Open};
    if (entered.pattern.front() == '#')
        return {"Pattern cannot begin with \"#\". \"[#]\" stands for the same.", RowField::Pattern};
    if (has_any(entered.pattern, "\n\0"sv))
        return {"Pattern cannot have line breaks", RowField::Pattern};
    for (const auto& [command, field] : {std::pair{&entered.open, RowField::Open},
                                         {&entered.view, RowField::View},
                                         {&entered.edit, RowField::Edit}}) {
        if (!is_blank(*command) && has_any(*command, "\t\n\0"sv))
            return {"Commands cannot have TABs or line breaks", field};
    }
    return row_too_long(row_text(entered));
}

}  // namespace dorn
