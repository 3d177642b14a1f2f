// The one name matcher: shell wildcards joined by "|", a leading "^" for any case.
#pragma once

namespace dorn {

/// 0 when `name` matches one of `patterns`, tried from left to right with fnmatch without flags
/// ("*" matches a leading dot and "/"). A leading "^" compares lower-case copies of both. Any
/// thread; nothing is written.
int es_strcmp(const char* name, const char* patterns);

}  // namespace dorn
