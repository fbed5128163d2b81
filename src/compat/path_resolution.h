// Absolute paths of names, whether the files exist or not.
#ifndef QXPORT_COMPAT_PATH_RESOLUTION_H
#define QXPORT_COMPAT_PATH_RESOLUTION_H

#include <cstddef>

namespace qxport {

// The most characters that a resolved path has; what is longer is cut.
constexpr size_t RESOLVED_LIMIT = 1024;

}  // namespace qxport

// Writes the absolute path of a name into a buffer of RESOLVED_LIMIT + 1 bytes. What exists of the name is
// resolved, links included; what does not is taken as it is written. Empty where the current directory cannot
// be told and the path needs it, with errno set, and where dots take away all of a missing name, as those of
// "/nosuch/../." do; but for the first errno is left as it was.
extern "C" void __qxport_resolve_unix_path(const char *in, char *out);

#endif
