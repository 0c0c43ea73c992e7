#pragma once

#include <common/common.h>

#include <memory>
#include <vector>

/// The list of projects as a window would show it: made anew when the registry was changed.
class ProjectList final : public common::ConfigListener {
public:
    explicit ProjectList(std::shared_ptr<common::Config> config);
    ProjectList(const ProjectList&) = delete;
    ProjectList& operator=(const ProjectList&) = delete;
    ~ProjectList();

    /// Only notes that the list is out of date: this must not throw, and making a list could.
    void onConfigChanged() override { isOutdated_ = true; }

    /// The names of the projects, after bringing them up to date where that is needed.
    const std::vector<OdString>& names();

private:
    std::shared_ptr<common::Config> config_;
    std::vector<OdString> names_;
    bool isOutdated_ = true;
};
