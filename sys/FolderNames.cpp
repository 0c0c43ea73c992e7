#include <sys/BeneathInternal.h>
#include <sys/CallsInternal.h>
#include <sys/Folder.h>

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string_view>

namespace sys {

namespace {

struct CloseList {
    void operator()(DIR* list) const { ::closedir(list); }
};

/// A path would lead out of the folder that the two names are to stay in.
std::error_code refusalOfName(const std::string& name) {
    const bool isName = name.find('/') == std::string::npos && name != ".";
    const int refusal = isName ? refusalOfForm(name) : EINVAL;
    return {refusal, std::generic_category()};
}

template <class Call>
std::error_code onNames(const std::string& one, const std::string& other, Call call) {
    for (const std::string& name : {one, other}) {
        if (const std::error_code refusal = refusalOfName(name))
            return refusal;
    }
    return call() < 0 ? calls::lastError() : std::error_code();
}

}  // namespace

std::error_code Folder::renameToFree(const std::string& from, const std::string& to) const {
    return onNames(from, to, [&] { return calls::renameToFree(number(), from, to); });
}

std::error_code Folder::exchange(const std::string& one, const std::string& other) const {
    return onNames(one, other, [&] { return calls::exchange(number(), one, other); });
}

Outcome<std::vector<std::string>> Folder::list(const std::string& relative) const {
    Handle opened = openBeneath(number(), relative, O_RDONLY | O_DIRECTORY);
    if (!opened.isOpen())
        return calls::lastError();
    const std::unique_ptr<DIR, CloseList> list(::fdopendir(opened.number()));
    if (list == nullptr)
        return calls::lastError();
    static_cast<void>(opened.giveAway());
    std::vector<std::string> names;
    for (;;) {
        // The end and a failure look alike otherwise.
        errno = 0;
        // Only for the others of one listing object it is unsafe to read on several threads.
        const dirent* const entry = ::readdir(list.get());  // NOLINT(concurrency-mt-unsafe)
        if (entry == nullptr)
            break;
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    if (errno != 0)
        return calls::lastError();
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace sys
