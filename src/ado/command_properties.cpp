// What a command can be told beside its text and its parameters.
#include <algorithm>
#include <utility>

#include <kaputil/ado/command.hpp>
#include <kaputil/ado/recordset.hpp>
#include <kaputil/ado/stream.hpp>
#include <kaputil/automation/convert.hpp>

#include "ado/procedure_parameters.hpp"
#include "ado/row_cursor.hpp"
#include "automation/class_builder.hpp"
#include "data/failures.hpp"

namespace kap::ado {

void Command::setCommandText(const String& value) {
    text_ = value;
    stream_ = Ref<Object>();
}

void Command::setDialect(const String& value) {
    if (!value.view().starts_with(u'{') || !value.view().ends_with(u'}')) {
        fail::invalidArgument();
    }
    dialect_ = value;
}

void Command::setCommandStream(const Variant& value) {
    auto* stream =
        value.isObject() ? dynamic_cast<Stream*>(value.as<Ref<Object>>().get()) : nullptr;
    if (stream == nullptr) {
        fail::invalidArgument();
    }
    stream->setPosition(0);
    text_ = stream->ReadText();
    stream_ = value;
}

Ref<Properties> Command::Properties() {
    const Ref<Command> self(this);
    return make<ado::Properties>(std::vector<Property::Details>{
        {u"Command Time Out", DataTypeEnum::adInteger,
         [self] { return Variant(self->CommandTimeout()); },
         [self](const Variant& value) { self->setCommandTimeout(convert::toLong(value)); }},
        {u"Command Type", DataTypeEnum::adInteger,
         [self] { return Variant(static_cast<std::int32_t>(self->CommandType())); }}});
}

std::vector<Ref<Parameter>> Command::parametersTold() const {
    if (!connection_) {
        fail::invalidConnection();
    }
    if (type_ == CommandTypeEnum::adCmdStoredProc) {
        return parametersOfProcedure(*connection_, text_);
    }
    std::vector<Ref<Parameter>> marks;
    const std::size_t count = markCount(text_.utf8());
    for (std::size_t i = 0; i < count; ++i) {
        marks.push_back(
            CreateParameter(u"Param" + convert::toString(static_cast<std::int32_t>(i + 1)),
                            DataTypeEnum::adVarWChar));
    }
    return marks;
}

}  // namespace kap::ado
