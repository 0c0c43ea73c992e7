#pragma once

#include <sys/Handle.h>
#include <sys/Outcome.h>

#include <sys/types.h>

#include <string>
#include <utility>

namespace sys {

/// Opens `path` below the open folder `folder`, "." being the folder itself. Not open, with the
/// cause in `errno`: ENOENT for an empty path and one with a NUL, EINVAL for an absolute one and
/// one with an empty component, "." or "..", ELOOP for one that leads through a link or ends in
/// one. Only with O_PATH | O_NOFOLLOW the last name may be a link, which is opened itself then.
Handle openBeneath(int folder, const std::string& path, int flags, mode_t mode = 0);

/// The same on a system that cannot check a path by itself: name by name.
Handle openBeneathByWalking(int folder, const std::string& path, int flags, mode_t mode);

/// 0, or the error number of a path that `openBeneath` refuses for its form.
int refusalOfForm(const std::string& path);

/// The folder of a path, empty for none, and the last name.
std::pair<std::string, std::string> splitPath(const std::string& path);

/// An open folder and a name in it, which stay together whatever happens to the path.
struct Place {
    /// Not open when the name lies in the folder that the path starts from.
    Handle opened;
    int folder = -1;
    std::string name;
};
/// Where the last name of a path lies.
Outcome<Place> placeOf(int folder, const std::string& path);

}  // namespace sys
