#include "cli/commands/sql/answer_writer.hpp"

#include "cli/commands/sql/forms/forms.hpp"

namespace kap::cli {

std::unique_ptr<AnswerWriter> answerWriter(AnswerForm form, std::ostream& out, Language language) {
    switch (form) {
        case AnswerForm::Csv:
            return csvAnswers(out);
        case AnswerForm::Tsv:
            return tsvAnswers(out);
        case AnswerForm::Markdown:
            return markdownAnswers(out);
        case AnswerForm::Html:
            return htmlAnswers(out, language);
        case AnswerForm::Json:
            return jsonAnswers(out);
        case AnswerForm::JsonLines:
            return jsonLineAnswers(out);
        case AnswerForm::Vertical:
            break;
    }
    return verticalAnswers(out);
}

}  // namespace kap::cli
