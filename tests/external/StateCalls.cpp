// Counts what the library asks of the platform's text files when it writes and reads a state, by
// standing in front of three of their operations. The argument says whose platform it is.
#include <common/common.h>
#include <platform/ut/File.h>
#include <platform/ut/ReadEntireFile.h>
#include <platform/ut/TextFile.h>

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

int addedLines = 0;
int wholeReads = 0;
int byteReads = 0;

/// The platform's own operation of that linker name.
template <class Function>
Function real(const char* name) {
    void* const address = dlsym(RTLD_NEXT, name);
    if (address == nullptr)
        std::abort();
    return reinterpret_cast<Function>(address);
}

int failures = 0;

void expect(bool isRight, const char* what) {
    if (isRight)
        return;
    std::printf("FAIL  %s (lines added: %d, whole reads: %d, reads of bytes: %d)\n", what,
                addedLines, wholeReads, byteReads);
    ++failures;
}

common::State largeState() {
    common::State state;
    for (int file = 0; file < 500; ++file)
        state.index[OdString(std::to_wstring(file))] = {file, false};
    return state;
}

}  // namespace

namespace ut {

__attribute__((visibility("default"))) void TextFile::addLine(const OdString& line) {
    ++addedLines;
    real<void (*)(TextFile*, const OdString&)>("_ZN2ut8TextFile7addLineERK8OdString")(this, line);
}

__attribute__((visibility("default"))) OdString readEntireFile(const OdString& path) {
    ++wholeReads;
    return real<OdString (*)(const OdString&)>("_ZN2ut14readEntireFileERK8OdString")(path);
}

__attribute__((visibility("default"))) std::size_t File::read(void* buffer, std::size_t size) {
    ++byteReads;
    return real<std::size_t (*)(File*, void*, std::size_t)>("_ZN2ut4File4readEPvm")(this, buffer,
                                                                                    size);
}

}  // namespace ut

int main(int count, char** arguments) {
    const bool isBundled = count > 1 && std::string(arguments[1]) == "bundled";
    std::string folder = (std::filesystem::temp_directory_path() / "qrv-calls-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr)
        return 2;
    const OdString path = OdString::fromNarrow(folder + "/qrv.state");

    expect(common::writeState(largeState(), path).hasValue(), "the state is written");
    expect(isBundled ? addedLines > 1 : addedLines == 1, "the text is one line, unless bundled");
    byteReads = 0;
    const Expected<common::State> state = common::deserialize(path);
    expect(state && state->index.size() == 500, "the state is read");
    expect(isBundled ? byteReads > 0 && wholeReads == 0 : byteReads == 0 && wholeReads == 1,
           "the file is read as a whole, unless bundled");
    std::filesystem::remove_all(folder);
    return failures == 0 ? 0 : 1;
}
