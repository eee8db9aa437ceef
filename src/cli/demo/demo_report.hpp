#pragma once

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/demo/sample_company.hpp"
#include "cli/output/terminal.hpp"

namespace kap::cli {

using NamedTexts = std::vector<std::pair<std::string, std::string>>;

// One call of a member, as the demo shows it.
struct Step {
    std::string user;
    std::string member;
    NamedTexts arguments;
    nlohmann::ordered_json result;  // null: the member has none
    NamedTexts values;              // what is worth seeing of the record
    std::string message;            // of the error object
    bool expected = true;           // whether all this is as it should be
};

// Tells people on the spot, or programs at the end in one JSON object, what the demo does.
class DemoReport {
public:
    DemoReport(std::ostream& out, const Terminal& terminal, bool json)
        : out_(out), terminal_(terminal), json_(json) {}

    void company(const std::string& database, bool created, std::uint64_t seed,
                 const std::vector<TableSize>& sizes);
    void chapter(const std::string& title, const std::string& story, const std::string& query);
    void add(const Step& step);
    // The register of the company's numbers was written to this file, or why it was not.
    void numberRegister(const std::string& file, const std::string& failure);
    // Closes the report; `hint`, when it is not empty, says how to go on.
    void finish(const std::string& hint);

    [[nodiscard]] bool allExpected() const noexcept { return unexpected_ == 0; }

private:
    void print(const Step& step);
    [[nodiscard]] std::string printedResult(const Step& step) const;
    [[nodiscard]] std::string printedValues(const NamedTexts& values) const;

    std::ostream& out_;
    Terminal terminal_;
    bool json_;
    std::string chapter_;
    int chapters_ = 0;
    int steps_ = 0;
    int unexpected_ = 0;
    nlohmann::ordered_json collected_ = nlohmann::ordered_json::object();
    nlohmann::ordered_json collectedSteps_ = nlohmann::ordered_json::array();
};

}  // namespace kap::cli
