// How many rows at once go to a Transact-SQL server.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "data/row_batch.hpp"
#include "data/table_session.hpp"
#include "replay.hpp"

namespace kap::ado {
namespace {

const std::string kAsked =
    "> BEGIN TRY EXEC (N'SELECT v FROM OPENJSON(N''[[\"\\\"\"]]'') WITH (v nvarchar(9) "
    "''$[0]'')') END TRY BEGIN CATCH SELECT N'' END CATCH\n";
const std::string kByText =
    "> INSERT INTO [t] ([id], [nome]) SELECT v0, v1 FROM OPENJSON(CAST(? AS nvarchar(max))) WITH "
    "(v0 int '$[0]', v1 nvarchar(20) '$[1]')\n? ntext ";
const std::string kWritten = "count 1\n";

// Rows with the numbers from 1 on, and these names; Null for an empty one.
class Names {
public:
    explicit Names(const std::vector<std::string>& names) : rows_(names.size()) {
        id_.name = "id";
        id_.type = DataTypeEnum::adInteger;
        name_.name = "nome";
        name_.type = DataTypeEnum::adVarWChar;
        name_.definedSize = 20;
        for (const std::string& name : names) {
            ids_.appendInteger(static_cast<std::int64_t>(ids_.size()) + 1);
            if (name.empty()) {
                names_.appendNull();
            } else {
                names_.appendBytes(name);
            }
        }
    }
    [[nodiscard]] RowBatch batch() const {
        return {"[t]", {{"[id]", "?", &id_, &ids_}, {"[nome]", "?", &name_, &names_}}, 0, rows_};
    }

private:
    std::size_t rows_;
    ColumnInfo id_;
    ColumnInfo name_;
    ColumnStore ids_;
    ColumnStore names_;
};

void appends(const std::string& traffic, const std::vector<std::string>& names) {
    test::Replay replay(traffic);
    const auto connection = replay.open();
    const Names rows(names);
    TableSession::of(*connection->session()).append(rows.batch());
}

// The rows of a text, each with its number; those that `without` holds are left out.
std::string textOf(const std::vector<std::string>& said, std::size_t without = 0) {
    std::string text;
    for (std::size_t i = 0; i < said.size(); ++i) {
        if (i + 1 != without) {
            text += std::string(text.empty() ? "[" : ",") + "[\"" + std::to_string(i + 1) + "\"," +
                    said[i] + "]";
        }
    }
    return text + "]\n";
}

TEST(ReplayedAppending, ManyRowsGoInOneText) {
    std::vector<std::string> names(30, "Rossi");
    std::vector<std::string> said(30, "\"Rossi\"");
    names[1] = "";
    said[1] = "null";
    names[2] = "a \"b\" \\ c";
    said[2] = R"("a \"b\" \\ c")";
    names[3] = "due\trighe";
    said[3] = R"("due\u0009righe")";
    names[4] = "Però €";
    said[4] = "\"Però €\"";
    appends(kAsked + "columns v nvarchar(9)\nrow \"\n" + kByText + textOf(said) + kWritten, names);
}

// Some servers leave the signs as they are escaped: texts with such signs go by parameters.
TEST(ReplayedAppending, WhatTheServerReadsOtherwiseGoesByItself) {
    std::vector<std::string> names(30, "Rossi");
    names[6] = "1/2\"";
    appends(kAsked + "columns v nvarchar(9)\nrow \\\"\n" + kByText +
                textOf(std::vector<std::string>(30, "\"Rossi\""), 7) + kWritten +
                "> INSERT INTO [t] ([id], [nome]) VALUES (?,?)\n? int 7\n? nvarchar 1/2\"\n" +
                kWritten,
            names);
}

std::string byParameters(const std::vector<std::string>& names) {
    std::string text = "> INSERT INTO [t] ([id], [nome]) VALUES ";
    std::string values;
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += i == 0 ? "(?,?)" : ",(?,?)";
        values += "? int " + std::to_string(i + 1) + "\n? nvarchar " + names[i] + "\n";
    }
    return text + "\n" + values + kWritten;
}

TEST(ReplayedAppending, GoesByParametersWhereMostCannotBeSaidSo) {
    const std::vector<std::string> names(30, "1/2\"");
    appends(kAsked + "columns v nvarchar(9)\nrow \\\"\n" + byParameters(names), names);
}

TEST(ReplayedAppending, GoesByParametersToServersWithoutSuchTexts) {
    const std::vector<std::string> names(30, "Rossi");
    appends(kAsked + "columns v nvarchar(9)\nrow \n" + byParameters(names), names);
    appends(kAsked + "error 42000 102 Incorrect syntax near 'TRY'.\n" + byParameters(names), names);
}

TEST(ReplayedAppending, AFewRowsGoByParametersWithoutAsking) {
    const std::vector<std::string> names(3, "Rossi");
    appends(byParameters(names), names);
}

TEST(ReplayedAppending, AskedOnceAConnectionAndPreparedOnceATable) {
    const std::vector<std::string> said(30, "\"Rossi\"");
    test::Replay replay(kAsked + "columns v nvarchar(9)\nrow \"\n" + kByText + textOf(said) +
                        kWritten + kByText + textOf(said) + kWritten);
    const auto connection = replay.open();
    const Names rows(std::vector<std::string>(30, "Rossi"));
    auto& session = TableSession::of(*connection->session());
    session.append(rows.batch());
    EXPECT_EQ(replay.roundTrips(), 2);
    session.append(rows.batch());
    EXPECT_EQ(replay.roundTrips(), 1);
}

}  // namespace
}  // namespace kap::ado
