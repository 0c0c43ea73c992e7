#include <sys/BeneathInternal.h>
#include <sys/CallsInternal.h>
#include <sys/EntriesInternal.h>
#include <sys/Folder.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <initializer_list>
#include <string_view>

namespace sys {

namespace {

/// A path would lead out of the folder that the two names are to stay in.
std::error_code refusalOfName(const std::string& name) {
    const bool isName = name.find('/') == std::string::npos && name != ".";
    const int refusal = isName ? refusalOfForm(name) : EINVAL;
    return {refusal, std::generic_category()};
}

template <class Call>
std::error_code onNames(std::initializer_list<std::reference_wrapper<const std::string>> names,
                        Call call) {
    for (const std::string& name : names) {
        if (const std::error_code refusal = refusalOfName(name))
            return refusal;
    }
    return call() < 0 ? calls::lastError() : std::error_code();
}

}  // namespace

std::error_code Folder::renameToFree(const std::string& from, const std::string& to) const {
    return onNames({from, to}, [&] { return calls::renameToFree(number(), from, to); });
}

std::error_code Folder::exchange(const std::string& one, const std::string& other) const {
    return onNames({one, other}, [&] { return calls::exchange(number(), one, other); });
}

std::error_code Folder::checkWritable(const std::string& name) const {
    return onNames({name}, [&] { return calls::checkRights(number(), name, W_OK); });
}

Outcome<std::vector<std::string>> Folder::list(const std::string& relative) const {
    const Handle opened = openBeneath(number(), relative, O_RDONLY | O_DIRECTORY);
    std::vector<std::string> names;
    const auto add = [&](std::string_view name, unsigned char) { names.emplace_back(name); };
    if (!opened.isOpen() || !visitEntries(opened.number(), add))
        return calls::lastError();
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace sys
