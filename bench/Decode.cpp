#include "bench/Scenes.h"
#include "inventory/decoding/BrewInfoDecoder.h"

#include <benchmark/benchmark.h>

#include <simdjson.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

// Decode/walk touches every value of a cask catalogue; Decode/records makes records of it. Aim: at most 2 to
// 1, and at most 1.5 times the bytes as extra memory.

namespace bench {

QByteArray caskCatalogue(int casks) {
    QByteArray json = "[";
    const QByteArray filler = QByteArray("\"variations\":{\"arm64_tahoe\":{\"url\":\"https://example.com/"
                                         "a\",\"sha256\":\"0123456789abcdef0123456789abcdef"
                                         "0123456789abcdef0123456789abcdef\"},\"sonoma\":{\"url\":\"https://"
                                         "example.com/b\",\"version\":\"1.2.3\"}},");
    for (int i = 0; i < casks; ++i) {
        const QByteArray n = QByteArray::number(i);
        if (i > 0)
            json += ',';
        json += "{\"token\":\"cask-" + n + "\",\"full_token\":\"cask-" + n +
                "\",\"old_tokens\":[],\"tap\":\"homebrew/cask\",\"name\":[\"Cask Number " + n +
                "\"],\"desc\":\"Does what cask number " + n + " does, and a little more \\u2014 quietly\"," +
                "\"homepage\":\"https://example.com/cask-" + n + "\",\"url\":\"https://example.com/cask-" +
                n + ".dmg\",\"url_specs\":{},\"version\":\"1." + n +
                ".0\",\"autobump\":true,\"installed\":null," +
                "\"installed_time\":null,\"bundle_version\":null,\"bundle_short_version\":null,\"outdated\":"
                "false," +
                "\"sha256\":\"no_check\",\"artifacts\":[{\"uninstall\":[{\"quit\":\"com.example.cask" + n +
                "\",\"launchctl\":[\"com.example.cask" + n + ".helper\"]}]},{\"app\":[\"Cask " + n +
                ".app\"],\"target\":\"$APPDIR/Cask " + n + ".app\"},{\"zap\":[{\"trash\":[";
        for (int j = 0; j < 8; ++j)
            json += QByteArray(j > 0 ? "," : "") + "\"~/Library/Application Support/com.example.cask" + n +
                    "/part" + QByteArray::number(j) + "\"";
        json +=
            "]}]}],\"caveats\":null,\"caveats_rosetta\":null,\"depends_on\":{\"macos\":{\">=\":[\"13\"]}}," +
            filler;
        for (int j = 0; j < 7; ++j)
            json += "\"extra_" + QByteArray::number(j) + "\":{" + filler.chopped(1) + "},";
        json +=
            "\"auto_updates\":null,\"deprecated\":false,\"disabled\":false,\"languages\":[\"en\",\"de\"]," +
            QByteArray("\"ruby_source_path\":\"Casks/c/cask-") + n + ".rb\"}";
    }
    return json + "]";
}

namespace {

const QByteArray &catalogue() {
    static const QByteArray bytes = caskCatalogue(7600);
    return bytes;
}

std::size_t walk(simdjson::ondemand::value value) {
    std::size_t count = 1;
    simdjson::ondemand::json_type type{};
    if (value.type().get(type))
        return count;
    if (type == simdjson::ondemand::json_type::object) {
        for (auto field : value.get_object())
            count += walk(field.value().value());
    } else if (type == simdjson::ondemand::json_type::array) {
        for (auto element : value.get_array())
            count += walk(element.value());
    } else if (type == simdjson::ondemand::json_type::string) {
        std::string_view text;
        count += value.get_string().get(text) == simdjson::SUCCESS ? text.size() & 1U : 0;
    }
    return count;
}

std::size_t walkCatalogue() {
    simdjson::ondemand::parser parser;
    const simdjson::padded_string padded(catalogue().constData(),
                                         static_cast<std::size_t>(catalogue().size()));
    auto document = parser.iterate(padded);
    return walk(document.get_value().value());
}

/// Peak memory of a child that runs the function, in bytes.
template <typename Function>
qint64 peakMemory(Function function) {
    const pid_t child = ::fork();
    if (child == 0) {
        benchmark::DoNotOptimize(function());
        ::_exit(0);
    }
    rusage usage{};
    ::wait4(child, nullptr, 0, &usage);
    return usage.ru_maxrss * 1024;
}

void decodeWalk(benchmark::State &state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(walkCatalogue());
    state.SetBytesProcessed(state.iterations() * catalogue().size());
}

void decodeRecords(benchmark::State &state) {
    const qint64 without = peakMemory([] { return catalogue().size(); });
    const qint64 with =
        peakMemory([] { return larkspur::decodeCaskCatalogue(catalogue())->elements.size(); });
    for (auto _ : state) {
        auto decoded = larkspur::decodeCaskCatalogue(catalogue());
        if (!decoded || decoded->elements.size() != 7600)
            state.SkipWithError("the catalogue was not decoded");
        benchmark::DoNotOptimize(decoded);
    }
    state.SetBytesProcessed(state.iterations() * catalogue().size());
    state.counters["extra_memory_per_byte"] =
        static_cast<double>(with - without) / static_cast<double>(catalogue().size());
}

} // namespace

BENCHMARK(decodeWalk)->Name("Decode/walk")->Unit(benchmark::kMillisecond);
BENCHMARK(decodeRecords)->Name("Decode/records")->Unit(benchmark::kMillisecond);

} // namespace bench
