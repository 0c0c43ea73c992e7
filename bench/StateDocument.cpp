#include <bench/StateDocument.h>

#include <algorithm>

namespace qrv_bench {

namespace {

/// With leading zeros, so that the paths come in the order of the file.
std::wstring paddedNumber(std::size_t number) {
    const std::wstring digits = std::to_wstring(number);
    return std::wstring(8 - std::min<std::size_t>(8, digits.size()), L'0') + digits;
}

std::wstring entry(std::size_t number) {
    const wchar_t* const name = number % 10 == 0 ? L"gel\u00e4nde" : L"section";
    const std::wstring path = L"drawings/storey-" + paddedNumber(number / 100) + L"/" + name +
                              L"-" + paddedNumber(number) + L".dwg";
    return L"        {\n"
           L"            \"data\" : {\n"
           L"                \"last_checked\" : " +
           std::to_wstring(1700000000000 + number * 977) +
           L",\n"
           L"                \"modified\" : " +
           (number % 7 == 0 ? L"true" : L"false") +
           L"\n"
           L"            },\n"
           L"            \"path\" : \"" +
           path +
           L"\"\n"
           L"        }";
}

}  // namespace

std::wstring stateDocument(std::size_t entries) {
    std::wstring text =
        L"{\n"
        L"    \"head\" : {\n"
        L"        \"reference\" : \"master\"\n"
        L"    },\n"
        L"    \"index\" : [\n";
    text.reserve(entries * 230 + 200);
    for (std::size_t number = 0; number < entries; ++number) {
        text += number == 0 ? L"" : L",\n";
        text += entry(number);
    }
    return text + L"\n    ]\n}";
}

}  // namespace qrv_bench
