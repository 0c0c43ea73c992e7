#include <cli/commands/Commands.h>
#include <cli/shell/ArgumentParser.h>
#include <cli/shell/JsonOutput.h>
#include <cli/text/ServerRecords.h>
#include <common/json/JsonParseError.h>
#include <engine/base/Printable.h>
#include <engine/base/Translation.h>
#include <platform/ut/ReadEntireFile.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace qrv::cli {

namespace {

struct Arguments {
    std::string kind;
    std::string file = "-";
};

OdString kindNames() {
    OdString names;
    for (const RecordKind& kind : recordKinds())
        names += (names.isEmpty() ? OdString() : OdString(L", ")) + OdString(kind.name);
    return names;
}

const RecordKind* findKind(std::string_view name) {
    const auto kinds = recordKinds();
    const auto found = std::find_if(kinds.begin(), kinds.end(),
                                    [name](const RecordKind& kind) { return kind.name == name; });
    return found == kinds.end() ? nullptr : &*found;
}

/// For the parser: empty, or that there is no such kind.
std::string refusalOfKind(const std::string& name) {
    if (findKind(name) != nullptr)
        return {};
    return OdString::format(tr(L"'%ls' is no kind of record; there are: %ls"),
                            printable(OdString::fromNarrow(name)), kindNames())
        .toNarrow();
}

Expected<OdString> readStandardInput() {
    std::string bytes;
    std::array<char, 1 << 16> buffer{};
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), stdin))
        bytes.append(buffer.data(), count);
    if (std::ferror(stdin) != 0)
        return ErrorMessage{
            OdString::format(tr(L"Standard input cannot be read: %ls"),
                             OdString(std::generic_category().message(errno).c_str()))};
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (bytes.starts_with(byteOrderMark))
        bytes.erase(0, byteOrderMark.size());
    return OdString::fromNarrow(bytes);
}

Expected<OdString> readText(const std::string& file) {
    if (file == "-")
        return readStandardInput();
    return ut::readEntireFile(OdString::fromNarrow(file));
}

/// What the reader throws is about the record, as what it returns.
Expected<jsonlib::json::Value> readRecord(const RecordKind& kind, const OdString& text) {
    try {
        return kind.read(text);
    } catch (const common::JsonParseError& error) {
        return ErrorMessage{error.description()};
    } catch (const std::length_error&) {
        return ErrorMessage{tr(L"The record ends in the middle of a text")};
    }
}

Expected<void> convert(const Arguments& arguments, Output& output) {
    const Expected<OdString> text = readText(arguments.file);
    if (!text)
        return text.error();
    const Expected<jsonlib::json::Value> record = readRecord(*findKind(arguments.kind), *text);
    if (!record)
        return record.error();
    writeJson(*record, output);
    return {};
}

}  // namespace

Action declareConvert(const ArgumentParser& parser) {
    const auto arguments = std::make_shared<Arguments>();
    const OdString kinds = OdString::format(tr(L"The kind of record: %ls"), kindNames());
    parser.addOption("RECORD", arguments->kind, kinds.toNarrow()).required().check(refusalOfKind);
    parser.addOption("FILE", arguments->file,
                     trUtf8(L"The record's file (default: -, standard input)"));
    return [arguments](Output& output) { return convert(*arguments, output); };
}

}  // namespace qrv::cli
