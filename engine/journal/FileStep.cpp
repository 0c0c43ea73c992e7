#include <engine/base/Printable.h>
#include <engine/base/SystemFailure.h>
#include <engine/base/Translation.h>
#include <engine/journal/FileStep.h>
#include <engine/worktree/AsideName.h>
#include <engine/worktree/FileDigest.h>

#include <string>
#include <utility>

namespace qrv {

namespace {

/// Names that are tried. So many that are taken mean something else.
constexpr int mostNames = 1000;
/// How often two programs may take turns before it is called a failure.
constexpr int mostTurns = 100;

/// It is no file that a version could be compared with, or its program lets nobody at it.
bool meansSomethingElse(std::error_code error) {
    return error == std::errc::operation_would_block || error == std::errc::is_a_directory ||
           error == std::errc::not_supported || error == std::errc::operation_not_supported ||
           error == std::errc::too_many_symbolic_link_levels;
}

bool isSameFile(const sys::FileStamp& one, const sys::FileStamp& other) {
    // Another name is a change of its own for the system.
    return one.number == other.number && one.sizeBytes == other.sizeBytes &&
           one.modifiedNs == other.modifiedNs;
}

/// One working file in its folder, which stays the same whatever happens to the path.
class Change {
public:
    Change(sys::NameInFolder place, const StepTarget& target, Caller& caller)
        : folder_(std::move(place.folder)),
          name_(std::move(place.name)),
          target_(target),
          caller_(caller) {}

    Expected<StepEnd> write(sys::NewFile file) {
        const sys::Outcome<sys::FileStamp> version = stampOf(file);
        if (!version)
            return unwritable(version.error());
        written_ = *version;
        if (target_.digest.isEmpty())
            return add(file);
        forgetWhatWasSeenBefore();
        if (const std::error_code error = giveAsideName(file))
            return unwritable(error);
        return exchange();
    }

    Expected<StepEnd> remove() {
        const sys::Outcome<sys::FileStatus> status = folder_.status(name_);
        if (!status && sys::meansAbsent(status.error()))
            return StepEnd();
        if (!status)
            return unremovable(status.error());
        if (status->kind == sys::FileKind::folder)
            return StepEnd();
        forgetWhatWasSeenBefore();
        if (const std::error_code error = moveAside())
            return sys::meansAbsent(error) ? Expected<StepEnd>(StepEnd()) : unremovable(error);
        const Expected<bool> isExpected = isAsExpected(aside_);
        if (isExpected && *isExpected)
            return removeAside(StepEnd());
        const Expected<StepEnd> left = nameAgain();
        return isExpected || !left ? left : isExpected.error();
    }

private:
    static sys::Outcome<sys::FileStamp> stampOf(const sys::NewFile& file) {
        const sys::Outcome<sys::InputFile> contents = file.contents();
        return contents ? contents->stamp() : contents.error();
    }

    ErrorMessage unwritable(std::error_code cause) const {
        return systemFailure(tr(L"'%ls' cannot be written: %ls"), target_.path.text(), cause);
    }
    ErrorMessage unremovable(std::error_code cause) const {
        return systemFailure(tr(L"'%ls' cannot be removed: %ls"), target_.path.text(), cause);
    }

    StepEnd done() const { return {StepEnd::Kind::done, written_}; }
    static StepEnd left() { return {StepEnd::Kind::left, std::nullopt}; }

    Expected<StepEnd> add(sys::NewFile& file) {
        const std::error_code error = file.publish(sys::NewFile::Existing::keep);
        if (error == std::errc::file_exists)
            return left();
        return error ? Expected<StepEnd>(unwritable(error)) : done();
    }

    /// A change of the contents that puts the old time back still changes the time of the change,
    /// but so does the exchange itself.
    void forgetWhatWasSeenBefore() {
        if (!target_.seen)
            return;
        const sys::Outcome<sys::FileStamp> version = folder_.stamp(name_);
        if (!version || *version != *target_.seen)
            target_.seen.reset();
    }

    std::error_code giveAsideName(sys::NewFile& file) {
        return underFreeName([&] {
            file.setName(aside_);
            return file.publish(sys::NewFile::Existing::keep);
        });
    }

    std::error_code moveAside() {
        return underFreeName([this] { return folder_.renameToFree(name_, aside_); });
    }

    template <class Call>
    std::error_code underFreeName(Call call) {
        std::error_code error;
        for (int attempt = 0; attempt < mostNames; ++attempt) {
            aside_ = asideName(target_.position, attempt);
            error = call();
            if (error != std::errc::file_exists)
                return error;
        }
        return error;
    }

    /// The new file is aside.
    Expected<StepEnd> exchange() {
        for (int turn = 0; turn < mostTurns; ++turn) {
            std::error_code error = folder_.exchange(aside_, name_);
            if (!error)
                return lookAtWhatCameOut();
            if (error == std::errc::not_supported)
                return replaceAfterALook();
            // Removed a moment ago, or about to be replaced.
            if (sys::meansAbsent(error))
                error = folder_.renameToFree(aside_, name_);
            if (!error)
                return done();
            if (error != std::errc::file_exists)
                return giveUp(error);
        }
        return giveUp(std::make_error_code(std::errc::device_or_resource_busy));
    }

    /// What is aside is the new file.
    Expected<StepEnd> giveUp(std::error_code cause) {
        static_cast<void>(folder_.removeFile(aside_));
        return unwritable(cause);
    }

    Expected<StepEnd> replaceAfterALook() {
        const Expected<bool> isExpected = isAsExpected(name_);
        if (!isExpected || !*isExpected) {
            static_cast<void>(folder_.removeFile(aside_));
            return isExpected ? Expected<StepEnd>(left()) : isExpected.error();
        }
        if (const std::error_code error = folder_.rename(aside_, name_))
            return giveUp(error);
        return done();
    }

    Expected<StepEnd> lookAtWhatCameOut() {
        const Expected<bool> isExpected = isAsExpected(aside_);
        if (isExpected && *isExpected)
            return removeAside(done());
        const Expected<StepEnd> end = exchangeBack();
        return isExpected || !end ? end : isExpected.error();
    }

    /// Whether what has that name is the file that was expected, and nobody is writing to it.
    Expected<bool> isAsExpected(const std::string& name) const {
        const sys::Outcome<sys::InputFile> file = folder_.openFile(name);
        if (!file && (meansSomethingElse(file.error()) || sys::meansAbsent(file.error())))
            return false;
        const sys::Outcome<sys::FileStamp> before = file ? file->stamp() : file.error();
        if (!before)
            return systemFailure(tr(L"'%ls' cannot be read: %ls"), target_.path.text(),
                                 before.error());
        if (file->isInUse())
            return false;
        if (target_.seen && isSameFile(*before, *target_.seen))
            return true;
        const Expected<OdString> digest = digestOfFile(folder_, OdString::fromNarrow(name));
        if (!digest)
            return digest.error();
        const sys::Outcome<sys::FileStamp> after = file->stamp();
        if (!after)
            return systemFailure(tr(L"'%ls' cannot be read: %ls"), target_.path.text(),
                                 after.error());
        return *digest == target_.digest && *after == *before;
    }

    Expected<StepEnd> removeAside(const StepEnd& end) {
        const std::error_code error = folder_.removeFile(aside_);
        if (error && !sys::meansAbsent(error))
            return unremovable(error);
        return end;
    }

    /// What is aside is what a program saved; the new file has the name, or what was saved once
    /// more since.
    Expected<StepEnd> exchangeBack() {
        if (const std::error_code error = folder_.exchange(aside_, name_))
            return sys::meansAbsent(error) ? nameAgain() : unwritable(error);
        const sys::Outcome<sys::FileStamp> version = folder_.stamp(aside_);
        if (version && version->number == written_->number)
            return removeAside(left());
        // The newest gets the name, and the one before stays beside it.
        if (const std::error_code error = folder_.exchange(aside_, name_))
            return sys::meansAbsent(error) ? nameAgain() : unwritable(error);
        return keep();
    }

    /// What is aside gets its name back, unless it is taken again.
    Expected<StepEnd> nameAgain() {
        const std::error_code error = folder_.renameToFree(aside_, name_);
        if (error == std::errc::file_exists)
            return keep();
        return error ? Expected<StepEnd>(unwritable(error)) : left();
    }

    Expected<StepEnd> keep() {
        const Expected<void> kept = keepBeside(folder_, aside_, name_, caller_);
        return kept ? Expected<StepEnd>(left()) : kept.error();
    }

    sys::Folder folder_;
    std::string name_;
    StepTarget target_;
    Caller& caller_;
    std::string aside_;
    std::optional<sys::FileStamp> written_;
};

/// "plan.dwg" becomes "plan.kept-1.dwg", so that its program still knows what it is.
std::string keptName(const std::string& name, int number) {
    const std::size_t point = name.rfind('.');
    const std::size_t end = point == std::string::npos || point == 0 ? name.size() : point;
    return name.substr(0, end) + ".kept-" + std::to_string(number) + name.substr(end);
}

}  // namespace

Expected<void> keepBeside(const sys::Folder& folder, const std::string& aside,
                          const std::string& name, Caller& caller) {
    std::error_code error;
    for (int number = 1; number <= mostNames; ++number) {
        const std::string kept = keptName(name, number);
        error = folder.renameToFree(aside, kept);
        if (error == std::errc::file_exists)
            continue;
        if (error)
            break;
        caller.note(OdString::format(
            tr(L"Note: another program saved '%ls' meanwhile; what it saved first is kept beside "
               L"it as '%ls'"),
            printable(OdString::fromNarrow(name)), printable(OdString::fromNarrow(kept))));
        return {};
    }
    return systemFailure(tr(L"'%ls' cannot be written: %ls"), OdString::fromNarrow(aside), error);
}

Expected<StepEnd> writeFile(const sys::Folder& root, const StepTarget& target, sys::NewFile file,
                            Caller& caller) {
    sys::Outcome<sys::NameInFolder> place = root.openFolderOf(target.path.bytes());
    if (!place)
        return systemFailure(tr(L"'%ls' cannot be written: %ls"), target.path.text(),
                             place.error());
    return Change(std::move(*place), target, caller).write(std::move(file));
}

Expected<StepEnd> removeFile(const sys::Folder& root, const StepTarget& target, Caller& caller) {
    sys::Outcome<sys::NameInFolder> place = root.openFolderOf(target.path.bytes());
    if (!place && !sys::meansAbsent(place.error()))
        return systemFailure(tr(L"'%ls' cannot be removed: %ls"), target.path.text(),
                             place.error());
    StepEnd end;
    if (place) {
        Expected<StepEnd> removed = Change(std::move(*place), target, caller).remove();
        if (!removed)
            return removed;
        end = *removed;
    }
    if (end.kind == StepEnd::Kind::done)
        root.removeEmptyParents(target.path.bytes());
    return end;
}

}  // namespace qrv
