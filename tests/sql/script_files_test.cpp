#include <algorithm>
#include <cctype>
#include <fstream>
#include <map>
#include <memory>
#include <optional>

#include <gtest/gtest.h>

#include "data/driver.hpp"
#include "drivers/driver_registry.hpp"
#include "script_file.hpp"
#include "support/build_folders.hpp"
#include "support/other_server.hpp"

namespace kap::test {
namespace {

// What a batch has answered, whether it failed or not.
struct Answer {
    std::vector<ado::Result> results;
    std::vector<ado::ServerMessage> messages;
};

std::string lines(const std::vector<std::string>& texts) {
    std::string result;
    for (const std::string& text : texts)
        result += text + "\n";
    return result;
}

class ScriptFiles : public ::testing::TestWithParam<ScriptFile> {
protected:
    Answer run(const ScriptBlock& block) {
        Answer answer;
        ado::Request request;
        request.text = block.sql;
        ado::Reply reply;
        try {
            session(block.connection).execute(request, reply);
            answer.messages = std::move(reply.messages);
        } catch (const ado::DriverError& error) {
            answer.messages = error.messages();
        }
        answer.results = std::move(reply.results);
        return answer;
    }

    // What the check of the script's database finds.
    std::vector<std::string> damage() {
        if (OtherServer::given() != nullptr) return {};
        ado::Request request;
        request.text = "DBCC CHECKDB";
        ado::Reply reply;
        std::vector<std::string> found;
        try {
            session(1).execute(request, reply);
        } catch (const ado::DriverError& error) {
            for (const ado::ServerMessage& message : error.messages()) {
                if (message.isError()) found.push_back(message.text);
            }
        }
        return found;
    }

private:
    // Two connections with one name share a database; each test has its own, by its file's name.
    ado::Session& session(int connection) {
        std::unique_ptr<ado::Session>& found = sessions_[connection];
        if (found == nullptr) {
            const auto keys = ado::ConnectionString::parse(database());
            found = ado::driverFor(keys).open(keys);
        }
        return *found;
    }

    const std::string& database() {
        if (database_.empty()) {
            OtherServer* server = OtherServer::given();
            database_ = server != nullptr ? server->makeDatabase()
                                          : "Provider=KapLocal;Lock Timeout=1;Data "
                                            "Source=:memory:" +
                                                GetParam().name;
        }
        return database_;
    }

    std::string database_;
    std::map<int, std::unique_ptr<ado::Session>> sessions_;
};

std::vector<std::string> textsOf(const Answer& answer, bool onlyErrors) {
    std::vector<std::string> texts;
    for (const ado::ServerMessage& message : answer.messages) {
        if (message.isError() || !onlyErrors) texts.push_back(message.text);
    }
    return texts;
}

std::optional<int> firstError(const Answer& answer) {
    const auto found = std::ranges::find_if(answer.messages, &ado::ServerMessage::isError);
    return found == answer.messages.end() ? std::nullopt : std::optional(found->nativeNumber);
}

std::vector<std::string> rowsOf(const Answer& answer, bool sorted) {
    std::vector<std::string> rows;
    bool first = true;
    for (const ado::Result& result : answer.results) {
        if (result.columns.empty()) continue;
        if (!first) rows.emplace_back("--");
        first = false;
        std::vector<std::string> own = shownRows(result);
        if (sorted) std::ranges::sort(own);
        rows.insert(rows.end(), own.begin(), own.end());
    }
    return rows;
}

std::optional<std::int64_t> lastCount(const Answer& answer) {
    std::optional<std::int64_t> count;
    for (const ado::Result& result : answer.results) {
        if (result.rowsAffected) count = result.rowsAffected;
    }
    return count;
}

void check(const ScriptBlock& block, const Answer& answer) {
    using Kind = ScriptBlock::Kind;
    if (block.kind == Kind::Error) {
        ASSERT_TRUE(firstError(answer)) << "an error was expected and none was raised";
        EXPECT_EQ(*firstError(answer), block.number) << lines(textsOf(answer, true));
        if (block.expects && (OtherServer::given() == nullptr || OtherServer::kWordsErrorsAlike)) {
            EXPECT_EQ(lines(textsOf(answer, true)), lines(block.expected));
        }
        return;
    }
    if (block.kind == Kind::Messages) {
        EXPECT_EQ(lines(textsOf(answer, false)), lines(block.expected));
        return;
    }
    ASSERT_FALSE(firstError(answer)) << *firstError(answer) << ": " << lines(textsOf(answer, true));
    if (block.kind == Kind::Count) {
        EXPECT_EQ(lastCount(answer), block.number);
    }
    const bool sorted = block.kind == Kind::SortedQuery ||
                        (OtherServer::given() != nullptr && !OtherServer::kKeepsOrder);
    if (block.kind == Kind::SortedQuery || block.kind == Kind::Query) {
        std::vector<std::string> expected = block.expected;
        if (sorted) std::ranges::sort(expected);
        EXPECT_EQ(lines(rowsOf(answer, sorted)), lines(expected));
    }
}

// Scripts that end with rows which a constraint let in while it was switched off.
bool leavesViolations(const std::string& script) {
    return script == "alter/nocheck" || script == "schemas/constraints";
}

TEST_P(ScriptFiles, AnswersAsTheServerDoes) {
    for (const ScriptBlock& block : GetParam().blocks()) {
        SCOPED_TRACE(GetParam().name + ".test, line " + std::to_string(block.line) + ":\n" +
                     block.sql);
        check(block, run(block));
    }
    if (!leavesViolations(GetParam().name)) {
        EXPECT_EQ(lines(damage()), "") << "the check of the database";
    }
}

std::vector<ScriptFile> allScriptFiles() {
    return scriptFiles(std::string(test::kSourceFolder) + "/tests/sql");
}

std::string testName(const ::testing::TestParamInfo<ScriptFile>& info) {
    std::string name = info.param.name;
    for (char& letter : name) {
        if (std::isalnum(static_cast<unsigned char>(letter)) == 0) letter = '_';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Sql, ScriptFiles, ::testing::ValuesIn(allScriptFiles()), testName);

TEST(OtherServer, IsTheOneThatTheEnvironmentNames) {
    if (OtherServer::given() == nullptr) {
        GTEST_SKIP() << "KAPUTIL_TEST_CONNECTION is not set: the scripts ran on embedded databases "
                        "only";
    }
}

TEST(ScriptFilesFolder, HoldsAtLeastThreeHundredScripts) {
    EXPECT_GE(allScriptFiles().size(), 300U);
}

TEST(ScriptFilesFolder, SaysInEveryFileWhatItIsFor) {
    for (const ScriptFile& file : allScriptFiles()) {
        std::ifstream stream(file.path);
        std::string name;
        std::string purpose;
        std::getline(stream, name);
        std::getline(stream, purpose);
        EXPECT_EQ(name, "# name: " + file.name);
        EXPECT_TRUE(purpose.starts_with("# purpose: ")) << file.path;
    }
}

}  // namespace
}  // namespace kap::test
