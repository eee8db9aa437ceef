#include "cli/commands/sql/forms/streamed_answers.hpp"

#include <cstddef>
#include <ostream>

#include "migrate/cell_text.hpp"

namespace kap::cli {
namespace {

constexpr std::size_t kPieceOfAnswers = std::size_t{64} * 1024;

}  // namespace

void StreamedAnswers::send() {
    out_.write(text_.data(), static_cast<std::streamsize>(text_.size()));
    out_.flush();
    text_.clear();
}

void StreamedAnswers::describe(const ado::Recordset& answer) {
    columns_.clear();
    const auto fields = answer.Fields();
    for (std::int32_t i = 0; i < fields->Count(); ++i) {
        const Ref<ado::Field> field = fields->Item(i);
        columns_.push_back({field->Name().utf8(), field->Type(), migrate::typeNameOf(*field),
                            field->DefinedSize(), migrate::isNumber(*field)});
    }
}

std::int64_t StreamedAnswers::write(ado::Recordset& answer) {
    std::int64_t rows = 0;
    if (answer.State() == ado::ObjectStateEnum::adStateOpen) {
        rows = writeRows(answer);
    } else if (const auto written = answer.rowsAffected()) {
        columns_.clear();
        count(text_, *written);
    }
    send();
    return rows;
}

std::int64_t StreamedAnswers::writeRows(ado::Recordset& answer) {
    describe(answer);
    begin(text_, !any_);
    any_ = true;
    const migrate::RowTexts texts(answer);
    std::int64_t rows = 0;
    try {
        for (; out_ && !answer.Eof(); answer.MoveNext(), ++rows) {
            row(text_, texts);
            if (text_.size() >= kPieceOfAnswers || texts.waitsForNext()) {
                send();
            }
        }
    } catch (...) {
        breakOff(text_);
        send();
        throw;
    }
    end(text_, rows, answer.rowsAffected());
    return rows;
}

void StreamedAnswers::finish() {
    endAll(text_);
    send();
}

}  // namespace kap::cli
