// A small host of the library: looks after one project for one round of work.
//
//     example_host PROJECT FILE INBOX SETTINGS
//
// PROJECT is the project's folder and becomes a repository. The changed file whose short name is
// FILE is committed. Then the files in the folder INBOX are taken over: what a colleague sent, in
// the place of a server. SETTINGS is the user's configuration directory.

#include "ProjectList.h"
#include "Session.h"
#include "WriteReport.h"
#include <common/common.h>
#include <platform/kernel/OdTimeStamp.h>
#include <platform/ut/FileName.h>

#include <exception>
#include <iostream>
#include <memory>

namespace {

struct Arguments {
    OdString project;
    OdString file;
    OdString inbox;
    OdString settings;
};

template <class... Values>
void say(const wchar_t* pattern, const Values&... values) {
    std::cout << OdString::format(pattern, values...).toNarrow() << '\n';
}

void reportProblem(const OdString& problem) {
    std::cerr << problem.toNarrow() << '\n';
}

OdString absolutePath(const char* argument) {
    ut::FileName name(OdString::fromNarrow(argument));
    name.makeAbsolute();
    return name.getFullPath();
}

Expected<void> registerProject(const common::RootPath& root, const OdString& settings,
                               const common::IoInterface& io) {
    const Expected<std::shared_ptr<common::Config>> config = common::Config::load(settings, io);
    if (!config)
        return config.error();
    ProjectList list(*config);
    say(L"projects before: %i", list.names().size());
    const OdString path = root.path();
    const OdString name = path.mid(path.reverseFind(ut::FileName::getPathSeparator()) + 1);
    // A server gives a project its id; until it does, a digest of its place serves.
    (*config)->write().data.add(path, name, generateSha(path));
    for (const OdString& project : list.names())
        say(L"project: %ls", project);
    return {};
}

Expected<void> show(const common::RepoChanges& changes) {
    for (const common::StatusRef& file : changes.changes) {
        const Expected<OdString> change = common::toString(file.status());
        if (!change)
            return change.error();
        say(L"%ls: %ls", *change, file.path());
    }
    return {};
}

void showHistory(const LastCommit& commit, const OdString& title) {
    const OdString author = L"ada@example.com";  // a real host knows who is logged in
    const common::HistoryItem row(OdTimeStamp(OdTimeStamp::kInitUniversalTime), author, title, L"",
                                  commit.number);
    std::cout << "history: " << row.getName().toStdString() << " | " << row.getInfo().toStdString()
              << '\n';
}

Expected<void> commitFile(const OdString& name, Session& session) {
    const Expected<common::RepoChanges> changes = session.findChanges(reportProblem);
    if (!changes)
        return changes.error();
    const Expected<void> shown = show(*changes);
    if (!shown)
        return shown;
    const Expected<common::StagedFile> file = stage(name, *changes, session.root);
    if (!file)
        return file.error();
    say(L"staged: %ls", file->path);
    const Expected<void> committed = session.commit(*file);
    if (!committed)
        return committed;
    showHistory(session.lastCommit, L"Changed " + file->path);
    return {};
}

const wchar_t* describe(Session::Arrival arrival) {
    switch (arrival) {
        case Session::Arrival::nothingNew:
            return L"nothing new: %ls";
        case Session::Arrival::newFile:
            return L"new file: %ls";
        case Session::Arrival::newVersion:
            return L"new version: %ls";
        case Session::Arrival::conflict:
            return L"conflict: %ls";
    }
    return L"%ls";
}

Expected<void> takeOver(const OdString& path, const OdString& inbox,
                        const common::RepoChanges& changes, Session& session,
                        const common::IoInterface& io) {
    const OdString sent = inbox + ut::FileName::getPathSeparator() + path;
    const Expected<OdString> url = session.storage.keep(session.root, sent);
    if (!url)
        return url.error();
    const Expected<Session::Arrival> arrival = session.takeOver(path, *url, changes, io);
    if (!arrival)
        return arrival.error();
    say(describe(*arrival), path);
    return {};
}

Expected<void> takeOverAll(const OdString& inbox, Session& session, const common::IoInterface& io) {
    const Expected<common::RepoChanges> changes = session.findChanges(reportProblem);
    if (!changes)
        return changes.error();
    const common::CollectOptions options(true, false, false, {});
    Expected<void> result;
    for (const OdString& path : common::collectDirContents(inbox, options).files) {
        result = takeOver(path, inbox, *changes, session, io);
        if (!result)
            break;
    }
    // What was taken over before a failure stays, and has to be remembered.
    const Expected<void> saved = session.lastCommit.save(session.root);
    return result ? saved : result;
}

Expected<void> work(const Arguments& arguments, const common::IoInterface& stateIo,
                    const common::IoInterface& registryIo) {
    Expected<Session> session = Session::open(arguments.project, stateIo);
    if (!session)
        return session.error();
    say(session->root.isNew() ? L"made a repository" : L"opened a repository");
    say(L"branch: %ls", session->cache->read().head.reference);
    const Expected<void> registered =
        registerProject(session->root, arguments.settings, registryIo);
    if (!registered)
        return registered;
    const Expected<void> committed = commitFile(arguments.file, *session);
    if (!committed)
        return committed;
    const Expected<void> takenOver = takeOverAll(arguments.inbox, *session, stateIo);
    for (const common::ConflictData& conflict : session->cache->read().conflicts)
        say(L"to be resolved: %ls", conflict.path);
    return takenOver;
}

// The library throws where it says so: for a short name that is no expression, for a file of the
// repository that was cut off inside a string, and when memory ends.
Expected<void> workWithoutThrowing(const Arguments& arguments, const common::IoInterface& stateIo,
                                   const common::IoInterface& registryIo) {
    try {
        return work(arguments, stateIo, registryIo);
    } catch (const std::exception& exception) {
        return ErrorMessage{OdString(exception.what())};
    }
}

}  // namespace

int main(int argumentCount, char** texts) {
    if (argumentCount != 5) {
        std::cerr << "Usage: example_host PROJECT FILE INBOX SETTINGS\n";
        return 2;
    }
    const WriteReport stateIo("state");
    const WriteReport registryIo("registry");
    const Arguments arguments{absolutePath(texts[1]), OdString::fromNarrow(texts[2]),
                              absolutePath(texts[3]), absolutePath(texts[4])};
    // The state and the registry are written when their owners end, so in here.
    const Expected<void> worked = workWithoutThrowing(arguments, stateIo, registryIo);
    bool isFine = true;
    for (const Expected<void>* result : {&worked, &stateIo.outcome(), &registryIo.outcome()}) {
        if (!*result)
            reportProblem(result->error().message);
        isFine = isFine && *result;
    }
    return isFine ? 0 : 1;
}
