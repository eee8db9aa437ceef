#pragma once

#include <iosfwd>
#include <memory>

#include "cli/commands/sql/answer_writer.hpp"

// What makes the writers of answerWriter().
namespace kap::cli {

[[nodiscard]] std::unique_ptr<AnswerWriter> csvAnswers(std::ostream& out);
[[nodiscard]] std::unique_ptr<AnswerWriter> tsvAnswers(std::ostream& out);
[[nodiscard]] std::unique_ptr<AnswerWriter> markdownAnswers(std::ostream& out);
[[nodiscard]] std::unique_ptr<AnswerWriter> htmlAnswers(std::ostream& out, Language language);
[[nodiscard]] std::unique_ptr<AnswerWriter> jsonAnswers(std::ostream& out);
[[nodiscard]] std::unique_ptr<AnswerWriter> jsonLineAnswers(std::ostream& out);
[[nodiscard]] std::unique_ptr<AnswerWriter> verticalAnswers(std::ostream& out);

}  // namespace kap::cli
