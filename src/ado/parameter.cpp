#include <kaputil/ado/command.hpp>
#include <kaputil/ado/parameter.hpp>

#include <algorithm>

#include <kaputil/automation/convert.hpp>

#include "ado/chunks.hpp"
#include "ado/element_index.hpp"
#include "ado/parameter_cell.hpp"
#include "automation/class_builder.hpp"
#include "base/unicode.hpp"
#include "data/failures.hpp"
#include "data/value_type.hpp"

namespace kap::ado {
namespace {

constexpr std::int32_t kNoLimit = -1;  // what programs give for a long text

}  // namespace

const ClassDescription& Parameter::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Parameter>(u"Parameter", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b14",
                                u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b24")
            .property<&Parameter::Direction, &Parameter::setDirection>(u"Direction")
            .property<&Parameter::Name, &Parameter::setName>(u"Name")
            .property<&Parameter::NumericScale, &Parameter::setNumericScale>(u"NumericScale")
            .property<&Parameter::Precision, &Parameter::setPrecision>(u"Precision")
            .property<&Parameter::Size, &Parameter::setSize>(u"Size")
            .property<&Parameter::Type, &Parameter::setType>(u"Type")
            .property<&Parameter::Value, &Parameter::setValue>(u"Value")
            .property<&Parameter::Attributes, &Parameter::setAttributes>(u"Attributes")
            .property<&Parameter::Properties>(u"Properties")
            .method<&Parameter::AppendChunk>(u"AppendChunk", {u"Data"})
            .build(u"Value");
    return description;
}

Ref<Properties> Parameter::Properties() const {
    return make<ado::Properties>(std::vector<Property::Details>());
}

void Parameter::AppendChunk(const Variant& data) {
    if (!isLongType(type_)) {
        fail::illegalOperation();
    }
    setValue(appending_ ? joinedChunks(value_, convert::plainValue(data)) : data);
    appending_ = true;
}

void Parameter::setType(DataTypeEnum value) {
    if (!isColumnType(value)) {
        fail::invalidArgument();
    }
    type_ = value;
}

void Parameter::setSize(std::int32_t value) {
    if (value < kNoLimit) {
        fail::invalidArgument();
    }
    size_ = value;
}

void Parameter::setDirection(ParameterDirectionEnum value) {
    if (value < ParameterDirectionEnum::adParamUnknown ||
        value > ParameterDirectionEnum::adParamReturnValue) {
        fail::invalidArgument();
    }
    direction_ = value;
}

void Parameter::setValue(const Variant& value) {
    appending_ = false;
    value_ = type_ == DataTypeEnum::adEmpty ? convert::plainValue(value)
                                            : convertedParameter(*this, value);
}

const ClassDescription& Parameters::classDescription() {
    static const ClassDescription description =
        ClassBuilder<Parameters>(u"Parameters", u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b15",
                                 u"e6d06f3b-5a86-4b3b-9c1d-0a6d4a6f7b25")
            .instancing(Instancing::NotCreatable)
            .property<&Parameters::Count>(u"Count")
            .property<&Parameters::Item>(u"Item", {u"Index"})
            .method<&Parameters::Append>(u"Append", {u"Object"})
            .method<&Parameters::Delete>(u"Delete", {u"Index"})
            .method<&Parameters::Refresh>(u"Refresh")
            .build(u"Item");
    return description;
}

std::int32_t Parameters::Count() const {
    return static_cast<std::int32_t>(parameters_.size());
}

std::size_t Parameters::positionOf(const Variant& index) const {
    return elementAt(index, parameters_.size(), [&](const String& name) {
        const auto found = std::ranges::find_if(parameters_, [&](const Ref<Parameter>& each) {
            return unicode::sameName(each->Name(), name);
        });
        return static_cast<std::size_t>(found - parameters_.begin());
    });
}

Ref<Parameter> Parameters::Item(const Variant& index) const {
    return parameters_[positionOf(index)];
}

void Parameters::Append(const Ref<Parameter>& parameter) {
    if (!parameter || parameter->Type() == DataTypeEnum::adEmpty) {
        fail::incompleteParameter();
    }
    if (std::ranges::find(parameters_, parameter) != parameters_.end()) {
        fail::objectInCollection();
    }
    parameters_.push_back(parameter);
}

void Parameters::Delete(const Variant& index) {
    parameters_.erase(parameters_.begin() + static_cast<std::ptrdiff_t>(positionOf(index)));
}

void Parameters::Refresh() {
    if (command_ != nullptr) {
        parameters_ = command_->parametersTold();
    }
}

}  // namespace kap::ado
