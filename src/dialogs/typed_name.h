// What was typed into a field that names a file. Event-loop thread only.
#pragma once

#include <string>

class QString;

namespace dorn {

/// The text as one line of UTF-8: line breaks at its ends, which come along when a whole line is
/// pasted, and NUL characters go; other line breaks become blanks.
std::string typed_text(const QString& text);

/// Tells the user that the typed name can't be written in the file system's encoding.
void report_untranslatable(const std::string& typed);

}  // namespace dorn
