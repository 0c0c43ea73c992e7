#pragma once

#include <common/repository/RootPath.h>
#include <tests/support/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <filesystem>

namespace qrv_test {

/// Beside what else is in `folder` there is a root with a folder "plans", in which the process
/// works for the length of a test.
class InsideARoot : public testing::Test {
protected:
    InsideARoot() {
        std::filesystem::create_directories(folder / "root/plans");
        std::filesystem::current_path(folder / "root/plans");
    }
    InsideARoot(const InsideARoot&) = delete;
    InsideARoot& operator=(const InsideARoot&) = delete;
    ~InsideARoot() override { std::filesystem::current_path(before_); }

    const TemporaryFolder folder;
    const common::RootPath root =
        common::RootPath::get(
            OdString::fromNarrow((std::filesystem::canonical(folder.path()) / "root").native()),
            true)
            .value();

private:
    const std::filesystem::path before_ = std::filesystem::current_path();
};

}  // namespace qrv_test
