// A late-bound call beside a virtual call of the same member with the same Variants. The member
// does next to nothing, so that only the calls are measured.

#include <array>
#include <cstdint>

#include <kaputil/automation/class_description.hpp>

#include "automation/class_builder.hpp"
#include "bench/job.hpp"

namespace {

using kap::Arguments;
using kap::ClassBuilder;
using kap::ClassDescription;
using kap::InvokeKind;
using kap::Ref;
using kap::Variant;

class Adder : public kap::DescribedObject {
public:
    static const ClassDescription& classDescription() {
        static const ClassDescription description =
            ClassBuilder<Adder>(u"Adder", u"", u"")
                .method<&Adder::Add>(u"Add", {u"Left", u"Right"})
                .build();
        return description;
    }
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    virtual Variant Add(const Variant& left, const Variant& right) {
        return left.as<double>() + right.as<double>();
    }
};

// An object that the compiler cannot see through: calls stay calls.
Ref<Adder> hiddenAdder() {
    Ref<Adder> adder = kap::make<Adder>();
    benchmark::DoNotOptimize(adder);
    return adder;
}

void finish(benchmark::State& state, const Variant& result) {
    if (result.as<double>() != 4.0) {
        state.SkipWithError("the sum is not the one expected");
    }
}

void byName(benchmark::State& state) {
    const Ref<Adder> adder = hiddenAdder();
    std::array<Variant, 2> arguments = {1.5, 2.5};
    Variant result;
    for (auto _ : state) {
        result = static_cast<kap::Object&>(*adder).invoke(u"Add", InvokeKind::Method,
                                                          Arguments{arguments, {}});
        benchmark::DoNotOptimize(result);
    }
    finish(state, result);
}

void byIdentifier(benchmark::State& state) {
    const Ref<Adder> adder = hiddenAdder();
    const std::int32_t id = adder->memberId(u"Add").value();
    std::array<Variant, 2> arguments = {1.5, 2.5};
    Variant result;
    for (auto _ : state) {
        result = adder->invoke(id, InvokeKind::Method, Arguments{arguments, {}});
        benchmark::DoNotOptimize(result);
    }
    finish(state, result);
}

void byVirtualCall(benchmark::State& state) {
    const Ref<Adder> adder = hiddenAdder();
    std::array<Variant, 2> arguments = {1.5, 2.5};
    Variant result;
    for (auto _ : state) {
        result = adder->Add(arguments[0], arguments[1]);
        benchmark::DoNotOptimize(result);
    }
    finish(state, result);
}

KAP_BENCH_PAIR("call: late-bound by name, two arguments", {"Object::invoke of a name", byName},
               {"a virtual call taking the same Variants", byVirtualCall}, 5.0);
KAP_BENCH_PAIR("call: late-bound by identifier, two arguments",
               {"Object::invoke of an identifier", byIdentifier},
               {"a virtual call taking the same Variants", byVirtualCall}, 5.0);

}  // namespace
