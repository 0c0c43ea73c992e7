#include <common/worktree/StatusRef.h>

namespace common {

namespace {

class FileStatusImp final : public StatusImp {
public:
    FileStatusImp(const OdString& path, FileChange change) : path_(path), change_(change) {}

    OdString path() const override { return path_; }
    FileChange status() const override { return change_; }
    std::shared_ptr<ConflictData>& conflictInfo() override { return conflict_; }
    bool operator==(const StatusImp& other) const override {
        const auto* status = dynamic_cast<const FileStatusImp*>(&other);
        return status != nullptr && status->path_ == path_ && status->change_ == change_;
    }

private:
    std::shared_ptr<ConflictData> conflict_;
    OdString path_;
    FileChange change_;
};

}  // namespace

StatusImp::~StatusImp() = default;

StatusRef::StatusRef(const OdString& path, FileChange change)
    : imp(std::make_shared<FileStatusImp>(path, change)) {
}

bool StatusRef::operator==(const StatusRef& other) const {
    if (imp == nullptr || other.imp == nullptr)
        return imp == other.imp;
    return *imp == *other.imp;
}

}  // namespace common
