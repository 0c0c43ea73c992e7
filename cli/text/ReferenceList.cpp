#include <cli/text/ReferenceList.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>

#include <utility>

namespace qrv::cli {

using common::Reference;
using common::RefType;

ReferenceList::ReferenceList(std::vector<Reference> references) {
    for (Reference& reference : references)
        byHash_[reference.commitHash].push_back(std::move(reference));
}

OdString ReferenceList::textAt(const OdString& hash) const {
    const auto found = byHash_.find(hash);
    if (found == byHash_.end())
        return {};
    OdString names;
    for (const Reference& reference : found->second) {
        const OdString name = printable(reference.name);
        names += names.isEmpty() ? L" (" : L", ";
        names += reference.type == RefType::Tag ? OdString::format(tr(L"tag %ls"), name) : name;
    }
    return names + L')';
}

jsonlib::json::Array ReferenceList::documentAt(const OdString& hash) const {
    jsonlib::json::Array array;
    const auto found = byHash_.find(hash);
    if (found == byHash_.end())
        return array;
    for (const Reference& reference : found->second) {
        jsonlib::json::Object object;
        object[L"type"] = reference.type == RefType::Tag ? L"tag" : L"branch";
        object[L"name"] = reference.name.toWide();
        array.emplace_back(std::move(object));
    }
    return array;
}

}  // namespace qrv::cli
