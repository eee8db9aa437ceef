#include "cli/demo/demo_report.hpp"

#include <algorithm>
#include <ostream>

#include <kaputil/automation/plain_text.hpp>

#include "cli/output/shown_text.hpp"

namespace kap::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kUserColumns = 7;
constexpr std::size_t kMemberColumns = 18;
constexpr std::size_t kResultColumns = 8;
constexpr const char* kStoryIndent = "   ";

Json objectOf(const NamedTexts& texts) {
    Json object = Json::object();
    for (const auto& [name, text] : texts) {
        object[name] = text;
    }
    return object;
}

Style colourOf(const std::string& user) {
    return user == "Anna" ? Style::Cyan : Style::Magenta;
}

// Neutral values are blank; a reader sees them better in words.
std::string visible(const std::string& text) {
    if (text.empty()) {
        return "(empty)";
    }
    if (text.find_first_not_of(' ') == std::string::npos) {
        return "(" + plain::text(text.size()) + " blanks)";
    }
    return shownText(text);
}

std::string shownResult(const Json& result) {
    if (result.is_number_float()) {
        return plain::shortest(result.get<double>());  // 3704 rather than 3704.0
    }
    return result.is_null() ? std::string() : result.dump();
}

}  // namespace

void DemoReport::company(const std::string& database, bool created, std::uint64_t seed,
                         const std::vector<TableSize>& sizes) {
    Json counts = Json::object();
    std::string listed;
    for (const TableSize& size : sizes) {
        counts[size.table] = size.rows;
        listed += (listed.empty() ? "" : ", ") + plain::text(size.rows) + " " + size.what;
    }
    collected_["database"] = database;
    collected_["created"] = created;
    collected_["seed"] = created ? Json(seed) : Json(nullptr);
    collected_["rows"] = std::move(counts);
    if (!json_) {
        out_ << terminal_.styled(Style::Bold, "A sample company") << ' '
             << (created ? "made" : "found") << " in " << shownText(database) << ":\n"
             << listed << ".\n";
    }
}

void DemoReport::chapter(const std::string& title, const std::string& story,
                         const std::string& query) {
    chapter_ = title;
    ++chapters_;
    if (json_) {
        return;
    }
    out_ << '\n'
         << terminal_.styled(Style::Bold, plain::text(chapters_) + "  " + title) << '\n'
         << kStoryIndent << story << '\n';
    if (!query.empty()) {
        out_ << kStoryIndent << terminal_.styled(Style::Dim, query) << '\n';
    }
    out_ << '\n';
}

void DemoReport::add(const Step& step) {
    ++steps_;
    unexpected_ += step.expected ? 0 : 1;
    if (!json_) {
        print(step);
        return;
    }
    collectedSteps_.push_back({{"step", steps_},
                               {"chapter", chapter_},
                               {"user", step.user},
                               {"member", step.member},
                               {"arguments", objectOf(step.arguments)},
                               {"result", step.result},
                               {"values", objectOf(step.values)},
                               {"message", step.message},
                               {"expected", step.expected}});
}

std::string DemoReport::printedResult(const Step& step) const {
    if (step.result.is_boolean()) {
        const bool done = step.result.get<bool>();
        return terminal_.styled(done ? Style::Green : Style::Yellow,
                                padded(done ? "True" : "False", kResultColumns));
    }
    const std::string text = shownResult(step.result);
    const std::size_t columns = std::max(kResultColumns, columnsOf(text) + 2);
    return terminal_.styled(Style::Green, padded(shownText(text), columns));
}

std::string DemoReport::printedValues(const NamedTexts& values) const {
    std::string printed;
    for (const auto& [name, text] : values) {
        printed += (printed.empty() ? "" : "  ") + terminal_.styled(Style::Dim, name) + ' ' +
                   visible(text);
    }
    return printed;
}

void DemoReport::print(const Step& step) {
    const std::string details = printedValues(step.values) +
                                (step.values.empty() || step.message.empty() ? "" : "  ") +
                                terminal_.styled(Style::Yellow, step.message);
    std::string line = kStoryIndent +
                       terminal_.styled(colourOf(step.user), padded(step.user, kUserColumns)) +
                       padded(step.member, kMemberColumns) + printedResult(step);
    if (step.values.empty() && step.message.empty()) {
        line.erase(line.find_last_not_of(' ') + 1);
    } else {
        line += details;
    }
    out_ << line << '\n';
    if (!step.expected) {
        out_ << kStoryIndent
             << terminal_.styled(Style::Red, "       ^ this is not what should happen") << '\n';
    }
}

void DemoReport::numberRegister(const std::string& file, const std::string& failure) {
    collected_["register"] = failure.empty() ? Json(file) : Json(nullptr);
    if (json_) {
        return;
    }
    out_ << '\n' << terminal_.styled(Style::Bold, "The register of the company's numbers") << '\n';
    if (failure.empty()) {
        out_ << kStoryIndent << "Open " << shownText(file) << " in a browser: the number of the\n"
             << kStoryIndent
             << "deleted quotation is missing, and reserved numbers have expired.\n";
    } else {
        out_ << kStoryIndent << "It was not written: " << shownText(failure) << '\n';
    }
}

void DemoReport::finish(const std::string& hint) {
    if (json_) {
        collected_["steps"] = collectedSteps_;
        collected_["ok"] = allExpected();
        out_ << collected_.dump(2) << '\n';
        return;
    }
    out_ << '\n';
    if (allExpected()) {
        out_ << terminal_.styled(Style::Green, plain::text(steps_) + " steps, each as expected.")
             << '\n';
    } else {
        out_ << terminal_.styled(Style::Red, plain::text(unexpected_) + " of " +
                                                 plain::text(steps_) + " steps not as expected.")
             << '\n';
    }
    if (!hint.empty()) {
        out_ << hint << '\n';
    }
}

}  // namespace kap::cli
