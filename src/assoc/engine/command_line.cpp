// From a template and quoted names to the text that a shell gets.
#include "assoc/engine/command.h"

#include <algorithm>
#include <string_view>

namespace dorn {

namespace {

constexpr std::string_view kApostrophe = "\\047";

bool is_word_start(std::string_view before) {
    return before.empty() ||
           std::string_view(" \t\n;&|()<>").find(before.back()) != std::string_view::npos;
}

/// Whether the text begins with output to a file by ">&", whose name one shell expands after it has
/// taken the quotes off; a descriptor that ends there ("2>&1") is no file.
bool is_output_to_file(std::string_view text) {
    if (!text.starts_with(">&")) return false;
    text.remove_prefix(std::min(text.find_first_not_of(" \t", 2), text.size()));
    const std::size_t end = std::min(text.find_first_not_of("0123456789-"), text.size());
    return end == 0 || !is_word_start(text.substr(end, 1));
}

bool is_quote(char c) {
    return c == '\'' || c == '"';
}

/// Whether a list of quoted names holds nothing that any context could take for more than text.
bool is_harmless(std::string_view names) {
    for (const char c : names) {
        const bool letter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        const bool fine = letter || (c >= '0' && c <= '9') ||
                          static_cast<unsigned char>(c) > 0x7F ||
                          std::string_view("/_.,+-@%=: '").find(c) != std::string_view::npos;
        if (!fine) return false;
    }
    return true;
}

/// Reads a template from left to right as a shell would, as far as that decides how the names are
/// written where an "@" stands, and builds the command line.
class Builder {
  public:
    Builder(std::string_view text, std::string_view names)
        : rest_(text), names_(names), harmless_(is_harmless(names)) {}

    std::optional<std::string> build() {
        const std::string_view text = rest_;
        while (!rest_.empty())
            step();
        if (!named_) {
            out_ = std::string(text) + ' ';
            insert();
        }
        if (refused_) return std::nullopt;
        return std::move(out_);
    }

  private:
    enum class Where { Plain, Single, Double, Comment };

    void step() {
        const char c = rest_.front();
        if (c == '@') {
            insert();
            skip(1);
        } else if (c == '\\' && rest_.size() > 1) {
            backslash(rest_[1]);
        } else if (is_quote(c) && is_around_names(c)) {
            insert();
            skip(3);
        } else {
            follow(c);
            copy(1);
        }
    }

    /// "'@'" or "\"@\"" whose quotes are not the ends of what stands around it.
    bool is_around_names(char quote) const {
        if (rest_.size() < 3 || rest_[1] != '@' || rest_[2] != quote) return false;
        return where_ == Where::Plain || (where_ == Where::Single && quote == '"') ||
               (where_ == Where::Double && quote == '\'');
    }

    void backslash(char next) {
        if (next == '@') {
            skip(1);
            copy(1);
        } else {
            section_nested_ = true;
            const bool before_escaped_at = next == '\\' && rest_.size() > 2 && rest_[2] == '@';
            // Between apostrophes it is a character like any other, and the next one counts.
            copy(before_escaped_at || where_ == Where::Single || where_ == Where::Comment ? 1 : 2);
        }
    }

    /// What the character does to the context.
    void follow(char c) {
        const std::string_view ahead = rest_;
        switch (where_) {
            case Where::Comment:
                if (c == '\n') where_ = Where::Plain;
                return;
            case Where::Single:
                if (c == '\'')
                    where_ = Where::Plain;
                else if (std::string_view("\"`#").find(c) != std::string_view::npos ||
                         ahead.starts_with("<<") || ahead.starts_with("((") ||
                         ahead.starts_with("$[") || is_output_to_file(ahead))
                    section_nested_ = true;
                return;
            case Where::Double:
                if (c == '"')
                    where_ = Where::Plain;
                else if (c == '`' || ahead.starts_with("$(") || ahead.starts_with("${") ||
                         ahead.starts_with("$["))
                    nested_ = true;
                else if (c == '\'' || c == '#' || ahead.starts_with("<<") ||
                         ahead.starts_with("((") || is_output_to_file(ahead))
                    section_nested_ = true;
                return;
            case Where::Plain:
                if (is_quote(c)) {
                    // Some shells read escapes between "$'" and the apostrophe at the end.
                    nested_ = nested_ || (c == '\'' && out_.ends_with('$'));
                    where_ = c == '\'' ? Where::Single : Where::Double;
                    section_nested_ = false;
                } else if (c == '#' && is_word_start(out_)) {
                    where_ = Where::Comment;
                } else if (c == '`' || ahead.starts_with("<<") || ahead.starts_with("((") ||
                           ahead.starts_with("$[") || is_output_to_file(ahead)) {
                    nested_ = true;
                }
        }
    }

    /// Whether what stands here may be read by more rules than those of one kind of quotes.
    bool is_doubtful() const {
        const bool in_quotes = where_ == Where::Single || where_ == Where::Double;
        return nested_ || (in_quotes && section_nested_) || out_.ends_with('$');
    }

    void insert() {
        named_ = true;
        if (where_ == Where::Comment && !harmless_) return;  // a newline would end it
        if (is_doubtful() && !harmless_) refused_ = true;
        for (const char c : names_) {
            if (where_ == Where::Single && c == '\'')
                out_ += "'\\''";
            else if (where_ == Where::Double && std::string_view("$`\"\\").find(c) != npos)
                (out_ += '\\') += c;
            else
                out_ += c;
        }
    }

    void skip(std::size_t count) {
        rest_.remove_prefix(count);
    }
    void copy(std::size_t count) {
        out_ += rest_.substr(0, count);
        skip(count);
    }

    static constexpr std::size_t npos = std::string_view::npos;

    std::string_view rest_;
    std::string_view names_;
    bool harmless_;
    std::string out_;
    Where where_ = Where::Plain;
    bool section_nested_ = false;  // the quotes hold what another shell may read as quotes
    bool nested_ = false;          // from here on the rules of the context are not followed
    bool named_ = false;
    bool refused_ = false;
};

}  // namespace

std::size_t add_name(std::string* buffer, const std::string& name) {
    if (buffer == nullptr) {
        std::size_t size = 3 + name.size();
        for (const char c : name)
            size += c == '\'' ? kApostrophe.size() - 1 : 0;
        return size;
    }
    if (name.empty()) return 0;
    const std::size_t before = buffer->size();
    *buffer += '\'';
    for (const char c : name) {
        if (c == '\'')
            *buffer += kApostrophe;
        else
            *buffer += c;
    }
    *buffer += "' ";
    return buffer->size() - before;
}

std::optional<std::string> command_line(const std::string& command, const std::string& names) {
    // A line break at the end, come with a line that was pasted, would leave appended names a line
    // of their own.
    const std::string_view line(command.data(), command.find_last_not_of("\r\n") + 1);
    return Builder(line, names).build();
}

}  // namespace dorn
