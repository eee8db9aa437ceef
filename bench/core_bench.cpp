// Property strings beside a hash map doing the same: named values written, read back, rewritten.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <kaputil/core/cproprieta.hpp>

#include "bench/job.hpp"

namespace {

using kap::CProprieta;
using kap::String;
using kap::Variant;

using HashMap = std::unordered_map<std::u16string, std::u16string>;

// What a program passes: the names and values of a record, already in the type that it keeps.
template <class Text>
struct Pairs {
    std::vector<Text> names;
    std::vector<Text> values;
};

Pairs<std::u16string> makePairs(std::size_t count) {
    Pairs<std::u16string> pairs;
    for (std::size_t i = 0; i < count; ++i) {
        const String number(std::to_string(i));
        pairs.names.push_back(u"CAMPO_" + number.units());
        pairs.values.push_back(u"valore del campo " + number.units());
    }
    return pairs;
}

std::size_t totalSize(const Pairs<std::u16string>& pairs) {
    std::size_t total = 0;
    for (const std::u16string& value : pairs.values) {
        total += value.size();
    }
    return total;
}

Pairs<Variant> makeVariants(std::size_t count) {
    const auto pairs = makePairs(count);
    Pairs<Variant> variants;
    for (std::size_t i = 0; i < count; ++i) {
        variants.names.emplace_back(std::u16string_view(pairs.names[i]));
        variants.values.emplace_back(std::u16string_view(pairs.values[i]));
    }
    return variants;
}

void finish(benchmark::State& state, std::size_t found, std::size_t expected, std::size_t items) {
    if (found != expected) {
        state.SkipWithError("the values read are not the values written");
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(items) *
                            static_cast<std::int64_t>(state.iterations()));
}

std::size_t readAll(const CProprieta& bag, const std::vector<Variant>& names) {
    std::size_t total = 0;
    for (const Variant& name : names) {
        total += bag.Leggi(name).as<String>().size();
    }
    return total;
}

std::size_t readAll(const HashMap& map, const std::vector<std::u16string>& names) {
    std::size_t total = 0;
    for (const std::u16string& name : names) {
        std::u16string value = map.at(name);  // copied out, as Leggi does
        benchmark::DoNotOptimize(value);
        total += value.size();
    }
    return total;
}

void writeAll(CProprieta& bag, const Pairs<Variant>& pairs) {
    for (std::size_t i = 0; i < pairs.names.size(); ++i) {
        bag.Scrivi(pairs.names[i].as<String>(), pairs.values[i]);
    }
}

void writeAll(HashMap& map, const Pairs<std::u16string>& pairs) {
    for (std::size_t i = 0; i < pairs.names.size(); ++i) {
        map[pairs.names[i]] = pairs.values[i];
    }
}

template <std::size_t Count>
void writeAndReadBag(benchmark::State& state) {
    const auto pairs = makeVariants(Count);
    std::size_t found = 0;
    for (auto _ : state) {
        const auto bag = kap::make<CProprieta>();
        writeAll(*bag, pairs);
        found = readAll(*bag, pairs.names);
    }
    finish(state, found, totalSize(makePairs(Count)), Count);
}

template <std::size_t Count>
void writeAndReadMap(benchmark::State& state) {
    const auto pairs = makePairs(Count);
    std::size_t found = 0;
    for (auto _ : state) {
        HashMap map;
        writeAll(map, pairs);
        found = readAll(map, pairs.names);
    }
    finish(state, found, totalSize(pairs), Count);
}

constexpr std::size_t kBig = 10'000;

void rewriteBag(benchmark::State& state) {
    auto pairs = makeVariants(kBig);
    const auto bag = kap::make<CProprieta>();
    writeAll(*bag, pairs);
    for (Variant& value : pairs.values) {
        value = u"altro valore";
    }
    for (auto _ : state) {
        writeAll(*bag, pairs);
    }
    finish(state, readAll(*bag, pairs.names), kBig * 12, kBig);
}

void rewriteMap(benchmark::State& state) {
    auto pairs = makePairs(kBig);
    HashMap map;
    writeAll(map, pairs);
    for (std::u16string& value : pairs.values) {
        value = u"altro valore";
    }
    for (auto _ : state) {
        writeAll(map, pairs);
    }
    finish(state, readAll(map, pairs.names), kBig * 12, kBig);
}

KAP_BENCH_PAIR("property string: write and read by name, 100 values",
               {"CProprieta, Scrivi and Leggi", writeAndReadBag<100>},
               {"std::unordered_map, values copied out", writeAndReadMap<100>}, 4.0);
KAP_BENCH_PAIR("property string: write and read by name, 1,000 values",
               {"CProprieta, Scrivi and Leggi", writeAndReadBag<1'000>},
               {"std::unordered_map, values copied out", writeAndReadMap<1'000>}, 4.0);
KAP_BENCH_PAIR("property string: write and read by name, 10,000 values",
               {"CProprieta, Scrivi and Leggi", writeAndReadBag<10'000>},
               {"std::unordered_map, values copied out", writeAndReadMap<10'000>}, 4.0);
KAP_BENCH_PAIR("property string: rewrite 10,000 values", {"CProprieta, Scrivi", rewriteBag},
               {"std::unordered_map", rewriteMap}, 4.0);

}  // namespace
