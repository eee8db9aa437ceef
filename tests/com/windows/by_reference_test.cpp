#include <kaputil/automation/by_ref.hpp>
#include <kaputil/automation/error.hpp>

#include "automation/class_builder.hpp"
#include "dispatch_client.hpp"
#include "platform/win32/automation/com_object.hpp"

// Every type in every form in which clients pass arguments, to an object with one member for each.
namespace kap::test {
namespace {

class Probe final : public DescribedObject {
public:
    static const ClassDescription& classDescription();
    [[nodiscard]] const ClassDescription& description() const override {
        return classDescription();
    }

    void AByte(ByRef<std::uint8_t> value) { *value = 200; }
    void AnInteger(ByRef<std::int16_t> value) { *value = static_cast<std::int16_t>(*value + 1); }
    void ALong(ByRef<std::int32_t> value) { *value += 1; }
    void ASingle(ByRef<float> value) { *value = 1.5F; }
    void ADouble(ByRef<double> value) { *value = 2.25; }
    void ACurrency(ByRef<Currency> value) { value->scaled = 12345; }
    void ADate(ByRef<Date> value) { value->days = 2.5; }
    void AText(ByRef<String> value) { *value += u"!"; }
    void ABoolean(ByRef<bool> value) { *value = !*value; }
    void AnObject(ByRef<Ref<Object>> value) { *value = make<Probe>(); }
    void AVariant(ByRef<Variant> value) { *value = u"nuovo"; }
    void Untouched(ByRef<Variant> /*value*/) {}
    void First(ByRef<std::int32_t> first, ByRef<std::int32_t> /*second*/) { ++*first; }
    std::int32_t Many(std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d,
                      std::int32_t e, std::int32_t f, std::int32_t g, std::int32_t h,
                      std::int32_t i, ByRef<std::int32_t> last) {
        *last = 10;
        return a + b + c + d + e + f + g + h + i;
    }
    void ThenFails(ByRef<std::int32_t> value) {
        *value = 9;
        throw AutomationError(errors::kInvalidArgument);
    }
    void ThenFailsWithText(ByRef<Variant> value, ByRef<std::int32_t> other) {
        *value = u"nuovo";
        *other = 9;
        throw AutomationError(errors::kInvalidArgument);
    }
    void Both(ByRef<Variant> value, ByRef<std::int32_t> other) {
        *value = u"nuovo";
        *other = 9;
    }
    std::int32_t Reads(ByRef<std::int32_t> value) { return *value; }
};

const ClassDescription& Probe::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Probe>(u"Probe", u"", u"")
            .method<&Probe::AByte>(u"AByte", {Parameter(u"v").otherwise(std::uint8_t{0})})
            .method<&Probe::AnInteger>(u"AnInteger", {Parameter(u"v").otherwise(std::int16_t{0})})
            .method<&Probe::ALong>(u"ALong", {Parameter(u"v").otherwise(std::int32_t{0})})
            .method<&Probe::ASingle>(u"ASingle", {Parameter(u"v").otherwise(0.0F)})
            .method<&Probe::ADouble>(u"ADouble", {Parameter(u"v").otherwise(0.0)})
            .method<&Probe::ACurrency>(u"ACurrency", {Parameter(u"v").otherwise(Currency{})})
            .method<&Probe::ADate>(u"ADate", {Parameter(u"v").otherwise(Date{})})
            .method<&Probe::AText>(u"AText", {Parameter(u"v").otherwise(u"")})
            .method<&Probe::ABoolean>(u"ABoolean", {Parameter(u"v").otherwise(false)})
            .method<&Probe::AnObject>(u"AnObject", {Parameter(u"v").otherwise(Ref<Object>())})
            .method<&Probe::AVariant>(u"AVariant", {Parameter(u"v").otherwise(u"")})
            .method<&Probe::Untouched>(u"Untouched", {Parameter(u"v").otherwise(u"")})
            .method<&Probe::First>(u"First", {u"a", u"b"})
            .method<&Probe::Many>(u"Many",
                                  {u"a", u"b", u"c", u"d", u"e", u"f", u"g", u"h", u"i", u"last"})
            .method<&Probe::ThenFails>(u"ThenFails", {u"v"})
            .method<&Probe::ThenFailsWithText>(u"ThenFailsWithText", {u"v", u"o"})
            .method<&Probe::Both>(u"Both", {u"v", u"o"})
            .method<&Probe::Reads>(u"Reads", {u"v"})
            .build();
    return description;
}

class ByReference : public testing::Test {
protected:
    ByReference() { *probe_.out() = platform::automation::dispatchOf(make<Probe>()); }

    Apartment apartment_;
    Pointer<IDispatch> probe_;
};

TEST_F(ByReference, EveryOptionalParameterTakesAMissingArgument) {
    for (const MemberDescription& member : Probe::classDescription().members) {
        const String& name = member.name;
        if (!member.parameters.front().defaultValue) {
            continue;
        }
        call(probe_, platform::wide(name));
        call(probe_, platform::wide(name), Value::missing());
        Value variable = Value::missing();
        call(probe_, platform::wide(name), Value::to(variable));
    }
}

TEST_F(ByReference, EveryMemberTakesAValue) {
    for (const wchar_t* name : {L"AByte", L"AnInteger", L"ALong", L"ASingle", L"ADouble",
                                L"ACurrency", L"ADate", L"AText", L"ABoolean", L"AVariant"}) {
        call(probe_, name, 5);
    }
    call(probe_, L"ALong", L"5");
    call(probe_, L"ADate", L"25/12/2003");
    call(probe_, L"AnObject", probe_);
}

template <class T>
void expectWritten(const Pointer<IDispatch>& probe, const wchar_t* member, VARTYPE type, T before,
                   T after) {
    T variable = before;
    call(probe, member, Value::to(type, variable));
    EXPECT_EQ(after, variable) << type;
}

TEST_F(ByReference, VariablesOfTheirTypeAreWritten) {
    expectWritten<std::uint8_t>(probe_, L"AByte", VT_UI1, 1, 200);
    expectWritten<std::int16_t>(probe_, L"AnInteger", VT_I2, -5, -4);
    expectWritten<std::int32_t>(probe_, L"ALong", VT_I4, 70000, 70001);
    expectWritten<float>(probe_, L"ASingle", VT_R4, 0, 1.5F);
    expectWritten<double>(probe_, L"ADouble", VT_R8, 0, 2.25);
    expectWritten<std::int64_t>(probe_, L"ACurrency", VT_CY, 1, 12345);
    expectWritten<double>(probe_, L"ADate", VT_DATE, 0, 2.5);
    expectWritten<VARIANT_BOOL>(probe_, L"ABoolean", VT_BOOL, VARIANT_FALSE, VARIANT_TRUE);
}

TEST_F(ByReference, VariablesOfOtherTypesAreWrittenConverted) {
    expectWritten<std::int32_t>(probe_, L"AByte", VT_I4, 1, 200);
    expectWritten<double>(probe_, L"AnInteger", VT_R8, 3.0, 4.0);
    expectWritten<std::int16_t>(probe_, L"ALong", VT_I2, 7, 8);
    expectWritten<std::int64_t>(probe_, L"ALong", VT_I8, 7, 8);
    expectWritten<std::uint64_t>(probe_, L"ALong", VT_UI8, 7, 8);
    expectWritten<std::uint32_t>(probe_, L"ALong", VT_UI4, 7, 8);
    expectWritten<std::uint16_t>(probe_, L"ALong", VT_UI2, 7, 8);
    expectWritten<signed char>(probe_, L"ALong", VT_I1, 7, 8);
    expectWritten<std::int32_t>(probe_, L"ALong", VT_INT, 7, 8);
    expectWritten<std::uint32_t>(probe_, L"ALong", VT_UINT, 7, 8);
    expectWritten<std::int64_t>(probe_, L"ADouble", VT_CY, 1, 22500);
    expectWritten<std::int16_t>(probe_, L"ADouble", VT_I2, 1, 2);
}

TEST_F(ByReference, AValueThatAVariableCannotHoldIsAnError) {
    std::int16_t small = 1;
    std::int64_t big = 32767;
    Value result;
    EXPECT_EQ(S_OK, invoke(probe_.get(), idOf(probe_.get(), L"ALong"), DISPATCH_METHOD,
                           values(Value::to(VT_I8, big)), result));
    signed char tiny = 127;
    EXPECT_EQ(static_cast<HRESULT>(0x800A0006),
              failureOf(probe_, L"ALong", Value::to(VT_I1, tiny)).code);
    EXPECT_EQ(127, tiny);
    EXPECT_EQ(static_cast<HRESULT>(0x800A000D),
              failureOf(probe_, L"AVariant", Value::to(VT_I2, small)).code);
    EXPECT_EQ(1, small);
}

TEST_F(ByReference, TextsAreReplaced) {
    BSTR text = SysAllocString(L"ciao");
    call(probe_, L"AText", Value::to(VT_BSTR, text));
    EXPECT_STREQ(L"ciao!", text);
    SysFreeString(text);
    BSTR empty = nullptr;
    call(probe_, L"AText", Value::to(VT_BSTR, empty));
    EXPECT_STREQ(L"!", empty);
    SysFreeString(empty);
}

TEST_F(ByReference, DecimalsAreReplaced) {
    DECIMAL decimal{};
    decimal.Lo64 = 41;
    call(probe_, L"ALong", Value::to(VT_DECIMAL, decimal));
    EXPECT_EQ(42U, decimal.Lo64);
    EXPECT_EQ(0, decimal.scale);
}

TEST_F(ByReference, ObjectsAreReplaced) {
    IDispatch* object = nullptr;
    call(probe_, L"AnObject", Value::to(VT_DISPATCH, object));
    ASSERT_NE(nullptr, object);
    EXPECT_NE(probe_.get(), object);
    EXPECT_EQ(0U, object->Release());
}

TEST_F(ByReference, VariantsTakeTheTypeThatIsWritten) {
    const auto written = [&](const wchar_t* member, Value before) {
        Value variable = std::move(before);
        call(probe_, member, Value::to(variable));
        return variable;
    };
    EXPECT_EQ(VT_UI1, written(L"AByte", 1).type());
    EXPECT_EQ(VT_I2, written(L"AnInteger", 1).type());
    EXPECT_EQ(VT_I4, written(L"ALong", 1).type());
    EXPECT_EQ(VT_R4, written(L"ASingle", 1).type());
    EXPECT_EQ(VT_R8, written(L"ADouble", 1).type());
    EXPECT_EQ(VT_CY, written(L"ACurrency", 1).type());
    EXPECT_EQ(VT_DATE, written(L"ADate", 1).type());
    EXPECT_EQ(L"a!", written(L"AText", L"a").text());
    EXPECT_EQ(VT_BOOL, written(L"ABoolean", 0).type());
    EXPECT_EQ(VT_DISPATCH, written(L"AnObject", probe_).type());
    EXPECT_EQ(L"nuovo", written(L"AVariant", 1).text());
}

TEST_F(ByReference, AReferenceToAReferenceReachesTheVariable) {
    Value variable(1);
    Value reference = Value::to(variable);
    call(probe_, L"ALong", Value::to(reference));
    EXPECT_EQ(2, variable.number());
}

TEST_F(ByReference, WhatAMemberDoesNotAssignKeepsItsType) {
    Value variable;
    V_VT(&variable.raw) = VT_I8;
    V_I8(&variable.raw) = 5;
    call(probe_, L"Untouched", Value::to(variable));
    EXPECT_EQ(VT_I8, variable.type());
}

TEST_F(ByReference, OneVariableForTwoParametersTakesWhatWasAssigned) {
    std::int32_t variable = 1;
    call(probe_, L"First", Value::to(VT_I4, variable), Value::to(VT_I4, variable));
    EXPECT_EQ(2, variable);
}

TEST_F(ByReference, MoreArgumentsThanMostCallsHaveArePassedInTheirOrder) {
    std::int32_t last = 0;
    EXPECT_EQ(45,
              call(probe_, L"Many", 1, 2, 3, 4, 5, 6, 7, 8, 9, Value::to(VT_I4, last)).number());
    EXPECT_EQ(10, last);
}

TEST_F(ByReference, AFailureKeepsWhatWasAssignedBefore) {
    std::int32_t number = 1;
    failureOf(probe_, L"ThenFails", Value::to(VT_I4, number));
    EXPECT_EQ(9, number);
    Value variable(L"1");
    failureOf(probe_, L"ThenFails", Value::to(variable));
    EXPECT_EQ(VT_I4, variable.type());
    EXPECT_EQ(9, variable.number());
    Value first(1);
    Value second = Value::to(first);
    failureOf(probe_, L"ThenFails", Value::to(second));
    EXPECT_EQ(9, first.number());
}

TEST_F(ByReference, AFailureIsToldWhateverAVariableCannotHold) {
    std::int16_t small = 1;
    std::int32_t number = 1;
    EXPECT_EQ(
        static_cast<HRESULT>(0x800A0005),
        failureOf(probe_, L"ThenFailsWithText", Value::to(VT_I2, small), Value::to(VT_I4, number))
            .code);
    EXPECT_EQ(1, small);
    EXPECT_EQ(9, number);
}

TEST_F(ByReference, AVariableThatCannotHoldItsValueKeepsNoOtherFromItsOwn) {
    std::int16_t small = 1;
    std::int32_t number = 1;
    EXPECT_EQ(static_cast<HRESULT>(0x800A000D),
              failureOf(probe_, L"Both", Value::to(VT_I2, small), Value::to(VT_I4, number)).code);
    EXPECT_EQ(1, small);
    EXPECT_EQ(9, number);
}

TEST_F(ByReference, WhatAMemberOnlyReadsKeepsItsTypeInEveryForm) {
    Value text(L"7");
    EXPECT_EQ(7, call(probe_, L"Reads", Value::to(text)).number());
    EXPECT_EQ(L"7", text.text());
    double number = 7;
    EXPECT_EQ(7, call(probe_, L"Reads", Value::to(VT_R8, number)).number());
    EXPECT_EQ(7, number);
}

// Another maker's object, called by the library.
TEST_F(ByReference, WhatAnotherMakersMemberAssignsReachesTheLibrary) {
    const auto foreign = make<platform::automation::ComObject>(Pointer<IDispatch>(probe_));
    std::vector<Variant> arguments = {Variant(u"1")};
    EXPECT_THROW(foreign->invoke(u"ThenFails", InvokeKind::Method, Arguments{arguments, {}}),
                 AutomationError);
    EXPECT_EQ(9, arguments[0].as<std::int32_t>());
    arguments = {Variant(u"7")};
    foreign->invoke(u"Reads", InvokeKind::Method, Arguments{arguments, {}});
    EXPECT_EQ(u"7", arguments[0].as<String>().view());
}

TEST_F(ByReference, ArraysCrossBothWays) {
    SAFEARRAYBOUND bounds[] = {{2, 1}, {3, -1}};
    Value array;
    V_VT(&array.raw) = VT_ARRAY | VT_I4;
    V_ARRAY(&array.raw) = SafeArrayCreate(VT_I4, 2, bounds);
    LONG place[] = {2, 0};
    std::int32_t number = 42;
    ASSERT_EQ(S_OK, SafeArrayPutElement(V_ARRAY(&array.raw), place, &number));
    const Variant taken = platform::automation::fromSystem(array.raw);
    const Array& held = taken.as<Array>();
    EXPECT_EQ(1, held.lowerBound(1));
    EXPECT_EQ(1, held.upperBound(2));
    const std::int32_t indexes[] = {2, 0};
    EXPECT_EQ(42, held.at(indexes).as<std::int32_t>());

    Value back;
    platform::automation::toSystem(taken, back.raw);
    ASSERT_EQ(VT_ARRAY | VT_I4, back.type());
    number = 0;
    ASSERT_EQ(S_OK, SafeArrayGetElement(V_ARRAY(&back.raw), place, &number));
    EXPECT_EQ(42, number);
}

TEST_F(ByReference, BytesCrossBothWays) {
    Value bytes;
    platform::automation::toSystem(Array::ofBytes({1, 2, 255}), bytes.raw);
    ASSERT_EQ(VT_ARRAY | VT_UI1, bytes.type());
    const Variant back = platform::automation::fromSystem(bytes.raw);
    EXPECT_EQ((std::vector<std::uint8_t>{1, 2, 255}), back.as<Array>().bytes());
}

TEST_F(ByReference, DecimalsKeepEveryDigit) {
    const auto decimal = Decimal::parse("-79228162514264337593543950.335");
    Value value;
    platform::automation::toSystem(*decimal, value.raw);
    EXPECT_EQ(VT_DECIMAL, value.type());
    EXPECT_EQ("-79228162514264337593543950.335",
              platform::automation::fromSystem(value.raw).as<Decimal>().plainText());
}

TEST_F(ByReference, TextsKeepEveryCharacter) {
    const String text = std::u16string_view(u"a\0b\xD800°", 5);
    Value value;
    platform::automation::toSystem(text, value.raw);
    EXPECT_EQ(text, platform::automation::fromSystem(value.raw).as<String>());
}

}  // namespace
}  // namespace kap::test
