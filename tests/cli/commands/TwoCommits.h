#pragma once

#include <tests/cli/Program.h>
#include <tests/engine/history/Repository.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace qrv_test {

/// Two commits on "master", the current branch, with these messages.
class TwoCommits : public testing::Test {
protected:
    TwoCommits(const char* firstMessage, const char* secondMessage) {
        runQrv(repository.folder.path(), {"init"});
        first = repository.add({}, firstMessage);
        second = repository.add({first}, secondMessage);
        repository.history.setReference(L"master", common::RefType::Branch, second);
    }

    Outcome qrv(const std::string& command, std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), command);
        return runQrv(repository.folder.path(), std::move(arguments));
    }

    Repository repository;
    OdString first;
    OdString second;
};

}  // namespace qrv_test
