#include "assoc/engine/association.h"

#include "dirmodel/name_match.h"
#include "platform/whole_file.h"
#include "ui/dialogs.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace dorn {

std::vector<Association> apat;

namespace {

constexpr std::size_t kPieceSize = kAssocLineSize;
constexpr int kFields = 4;
constexpr std::string_view kHeader =
    "# <pattern[|pattern[..]]> \\t <open_command> \\t <view_command> \\t <edit command>\n";
static_assert(kHeader.size() == 80);

/// Takes the next piece off `*rest`: to the end of the line, its newline removed, but at most
/// kPieceSize bytes. A piece ends at a NUL, too.
std::string_view take_piece(std::string_view* rest) {
    const std::size_t newline = rest->find('\n');
    const std::size_t whole = newline == std::string_view::npos ? rest->size() : newline + 1;
    const std::size_t length = std::min(whole, kPieceSize);
    std::string_view piece = rest->substr(0, length);
    rest->remove_prefix(length);
    piece = piece.substr(0, piece.find('\n'));
    return piece.substr(0, piece.find('\0'));
}

/// `commands` in the order of the file: open, view, edit.
void _add_pat(std::vector<Association>* rows, std::string pattern, std::string open,
              std::string view, std::string edit) {
    rows->push_back({std::move(pattern), std::move(open), std::move(edit), std::move(view)});
}

[[noreturn]] void fatal(const char* message) {
    std::fprintf(stderr, "DORN error: %s\n", message);
    wreport(w_instance("base"), "Error", "%s", message);
    std::exit(1);
}

[[noreturn]] void fatal_line(int ordinal) {
    char message[64];
    std::snprintf(message, sizeof message, "Invalid association at line %d", ordinal);
    fatal(message);
}

std::vector<Association> load(const char* directory, const char* file_name) {
    std::string content;
    const bool opened = directory != nullptr &&
                        read_whole_file(join_path(directory, file_name),
                                        std::numeric_limits<std::size_t>::max(), &content) == 0;
    if (!opened) return assoc_defaults();
    std::vector<Association> rows;
    if (const int bad = assoc_parse(content, &rows); bad != 0) fatal_line(bad);
    return rows;
}

}  // namespace

void init_read_associations(const char* directory, const char* file_name) {
    try {
        apat = load(directory, file_name);
    } catch (const std::bad_alloc&) {
        fatal("Unable to allocate memory");
    }
}

int assoc_parse(std::string_view content, std::vector<Association>* rows) {
    while (!content.empty()) {
        const std::string_view line = take_piece(&content);
        if (line.starts_with('#')) continue;
        if (line.find('\t') == std::string_view::npos) return static_cast<int>(rows->size()) + 1;
        std::vector<std::string> fields = _split_str(line, '\t', kFields);
        _add_pat(rows, std::move(fields[0]), std::move(fields[1]), std::move(fields[2]),
                 std::move(fields[3]));
    }
    return 0;
}

std::string assoc_format(const std::vector<Association>& rows) {
    std::string content(kHeader);
    for (const Association& row : rows)
        content += row.pattern + '\t' + row.open + '\t' + row.view + '\t' + row.edit + '\n';
    return content;
}

std::vector<Association> assoc_defaults() {
    std::vector<Association> rows;
    _add_pat(&rows, "*.[ch]", "ored", "ored -r", "ored");
    _add_pat(&rows, "[Mm]akefile", "orterm -z make -f @", "ored", "ored");
    _add_pat(&rows, "*.txt", "ored", "ored -r", "ored");
    _add_pat(&rows, "*.core", "orterm -z dumpinfo @", "", "");
    _add_pat(&rows, "^*.jpg|*.jpeg|*.gif|*.bmp", "orv", "", "orv");
    _add_pat(&rows, "^*.html|*.htm", "lanthorn -u file://$PWD/@", "lanthorn -u file://$PWD/@", "");
    _add_pat(&rows, "^*.rm|*.rm|*.ram|*.smi|*.smil", "realplay", "realplay", "");
    _add_pat(&rows, "^*.wav|*.aif|*.aiff", "orplay", "orplay", "");
    _add_pat(&rows, "^*.mpeg|*.mp[123agv]|*.au|*.iff", "orplay", "orplay", "");
    _add_pat(&rows, "^*.ttf|*.pfr|*.orf|*.ffs", "cp $PWD/@ /usr/orrin/font", "", "");
    return rows;
}

void assoc_replace(std::vector<Association> rows, const char* directory, const char* file_name) {
    apat = std::move(rows);
    if (directory == nullptr) return;
    // Nobody is told of a failure: the change holds for this run.
    static_cast<void>(write_whole_file(join_path(directory, file_name), assoc_format(apat)));
}

std::vector<std::string> _split_str(std::string_view text, char separator, int count) {
    std::vector<std::string> fields(static_cast<std::size_t>(std::max(count, 0)));
    for (std::string& field : fields) {
        const std::size_t end = text.find(separator);
        field = text.substr(0, end);
        if (end == std::string_view::npos) break;
        text.remove_prefix(end + 1);
    }
    return fields;
}

int isempty(const char* text) {
    return text[std::strspn(text, " \t\n\v\f\r")] == '\0' ? 1 : 0;
}

int _get_pat_idx(const char* file_name) {
    const auto found = std::find_if(apat.begin(), apat.end(), [file_name](const Association& row) {
        return es_strcmp(file_name, row.pattern.c_str()) == 0;
    });
    return found == apat.end() ? -1 : static_cast<int>(found - apat.begin());
}

const char* _get_pat_cmd(const char* file_name, AssocAction action) {
    const int index = _get_pat_idx(file_name);
    if (index < 0) return nullptr;
    const Association& row = apat[static_cast<std::size_t>(index)];
    const std::string* command = nullptr;
    switch (action) {
        case AssocAction::Open:
            command = &row.open;
            break;
        case AssocAction::View:
            command = &row.view;
            break;
        case AssocAction::Edit:
            command = &row.edit;
            break;
    }
    return command == nullptr || isempty(command->c_str()) == 1 ? nullptr : command->c_str();
}

}  // namespace dorn
