// How long reading and writing a state document takes and how much memory a read has at its peak,
// beside other libraries and beside the least that the prescribed tree of maps and wide strings
// costs. Destroying the trees is not timed.

#include <bench/AllocationCount.h>
#include <bench/StateDocument.h>
#include <common/json/Reader.h>
#include <common/json/Writer.h>
#include <platform/kernel/OdString.h>

#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>

#include <cstdint>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

namespace {

namespace json = jsonlib::json;
using WideEncoding = rapidjson::UTF32<wchar_t>;
using WideDocument = rapidjson::GenericDocument<WideEncoding>;

/// The tree as its description has it, without any thought for speed.
struct PlainValue {
    using Object = std::map<std::wstring, PlainValue>;
    using Array = std::vector<PlainValue>;
    std::variant<std::monostate, Object, Array, std::wstring, bool, std::int64_t, double> payload;
    bool isUnsigned = false;
};

/// Follows the state document's own few levels.
PlainValue plainCopy(const json::Value& value) {
    PlainValue plain;
    if (value.type() == json::Value_type::object) {
        auto& members = plain.payload.emplace<PlainValue::Object>();
        for (const auto& [key, member] : value.getObject())
            members.emplace_hint(members.end(), key, plainCopy(member));
    } else if (value.type() == json::Value_type::array) {
        auto& elements = plain.payload.emplace<PlainValue::Array>();
        elements.reserve(value.getArray().size());
        for (const json::Value& element : value.getArray())
            elements.push_back(plainCopy(element));
    } else if (value.type() == json::Value_type::string) {
        plain.payload = value.getString();
    } else if (value.type() == json::Value_type::integer) {
        plain.payload = value.getInt64();
    } else {
        plain.payload = value.getBool();
    }
    return plain;
}

const std::wstring& wideText(const benchmark::State& state) {
    static std::map<std::int64_t, std::wstring> texts;
    std::wstring& text = texts[state.range(0)];
    if (text.empty())
        text = qrv_bench::stateDocument(static_cast<std::size_t>(state.range(0)));
    return text;
}

std::string utf8Text(const benchmark::State& state) {
    return OdString(wideText(state)).toNarrow();
}

json::Value readOurs(const std::wstring& text) {
    json::Value value;
    if (!json::read(text.data(), text.data() + text.size(), value))
        throw std::runtime_error("the document is refused");
    return value;
}

/// Times `make`, without the destruction of what it makes.
template <class Make>
void timeMaking(benchmark::State& state, Make make) {
    for (auto _ : state) {
        std::optional made(make());
        benchmark::DoNotOptimize(made);
        state.PauseTiming();
        made.reset();
        state.ResumeTiming();
    }
}

double mebibytes(std::size_t bytes) {
    return static_cast<double>(bytes) / (1 << 20);
}

void readLibrary(benchmark::State& state) {
    const std::wstring& text = wideText(state);
    timeMaking(state, [&] { return readOurs(text); });
    const qrv_bench::AllocationCount count;
    const json::Value value = readOurs(text);
    state.counters["peak_MiB"] = mebibytes(count.peakBytes());
}

void buildPrescribedTree(benchmark::State& state) {
    const json::Value value = readOurs(wideText(state));
    timeMaking(state, [&] { return plainCopy(value); });
    const qrv_bench::AllocationCount count;
    const PlainValue plain = plainCopy(value);
    state.counters["peak_MiB"] = mebibytes(count.liveBytes());
}

void readNlohmann(benchmark::State& state) {
    const std::string text = utf8Text(state);
    timeMaking(state, [&] { return nlohmann::json::parse(text); });
}

/// A peer that gives up early would look fast.
template <class Document>
void requireParsed(const Document& document) {
    if (document.HasParseError())
        throw std::runtime_error("the peer refuses the document");
}

void readRapidUtf8(benchmark::State& state) {
    const std::string text = utf8Text(state);
    timeMaking(state, [&] {
        rapidjson::Document document;
        document.Parse(text.data(), text.size());
        requireParsed(document);
        return document;
    });
}

void readRapidWide(benchmark::State& state) {
    const std::wstring& text = wideText(state);
    timeMaking(state, [&] {
        WideDocument document;
        document.Parse(text.c_str());
        requireParsed(document);
        return document;
    });
}

void writeLibrary(benchmark::State& state) {
    const json::Value value = readOurs(wideText(state));
    timeMaking(state, [&] { return json::write(value); });
    const qrv_bench::AllocationCount count;
    const std::wstring text = json::write(value);
    state.counters["peak_MiB"] = mebibytes(count.peakBytes());
}

/// What the text alone costs, whoever writes it: memory for as many wide characters, touched once.
void fillWideText(benchmark::State& state) {
    const std::size_t length = wideText(state).size();
    timeMaking(state, [&] { return std::wstring(length, L' '); });
}

void writeNlohmann(benchmark::State& state) {
    const nlohmann::json value = nlohmann::json::parse(utf8Text(state));
    timeMaking(state, [&] { return value.dump(4); });
}

void writeRapidUtf8(benchmark::State& state) {
    rapidjson::Document document;
    document.Parse(utf8Text(state).c_str());
    requireParsed(document);
    timeMaking(state, [&] {
        auto buffer = std::make_unique<rapidjson::StringBuffer>();
        rapidjson::PrettyWriter writer(*buffer);
        document.Accept(writer);
        return buffer;
    });
}

void writeRapidWide(benchmark::State& state) {
    using Buffer = rapidjson::GenericStringBuffer<WideEncoding>;
    WideDocument document;
    document.Parse(wideText(state).c_str());
    requireParsed(document);
    timeMaking(state, [&] {
        auto buffer = std::make_unique<Buffer>();
        rapidjson::PrettyWriter<Buffer, WideEncoding, WideEncoding> writer(*buffer);
        document.Accept(writer);
        return buffer;
    });
}

constexpr std::int64_t entries = 100'000;
constexpr std::int64_t manyEntries = 1'000'000;

BENCHMARK(readLibrary)->Unit(benchmark::kMillisecond)->Arg(entries)->Arg(manyEntries);
BENCHMARK(buildPrescribedTree)->Unit(benchmark::kMillisecond)->Arg(entries);
BENCHMARK(readNlohmann)->Unit(benchmark::kMillisecond)->Arg(entries);
BENCHMARK(readRapidUtf8)->Unit(benchmark::kMillisecond)->Arg(entries);
BENCHMARK(readRapidWide)->Unit(benchmark::kMillisecond)->Arg(entries);
BENCHMARK(writeLibrary)->Unit(benchmark::kMillisecond)->Arg(entries)->Arg(manyEntries);
BENCHMARK(fillWideText)->Unit(benchmark::kMillisecond)->Arg(entries);
BENCHMARK(writeNlohmann)->Unit(benchmark::kMillisecond)->Arg(entries);
BENCHMARK(writeRapidUtf8)->Unit(benchmark::kMillisecond)->Arg(entries);
BENCHMARK(writeRapidWide)->Unit(benchmark::kMillisecond)->Arg(entries);

}  // namespace
