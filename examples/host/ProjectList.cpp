#include "ProjectList.h"

#include <utility>

ProjectList::ProjectList(std::shared_ptr<common::Config> config) : config_(std::move(config)) {
    config_->addListener(*this);
}

ProjectList::~ProjectList() {
    config_->removeListener(*this);  // the registry only refers to its listeners
}

const std::vector<OdString>& ProjectList::names() {
    if (!std::exchange(isOutdated_, false))
        return names_;
    names_.clear();
    for (const auto& [path, project] : config_->readProjects())
        names_.push_back(project.name);
    return names_;
}
