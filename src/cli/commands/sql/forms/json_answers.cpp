#include <algorithm>
#include <cstddef>
#include <vector>

#include <nlohmann/json.hpp>

#include <kaputil/automation/plain_text.hpp>

#include "cli/commands/sql/forms/forms.hpp"
#include "cli/commands/sql/forms/streamed_answers.hpp"

// The rows of an answer as JSON objects. A column has one type in every row, which follows from the
// column's own: a bit is true or false; int, smallint, tinyint, float and real are numbers;
// everything else is a text, bigint, decimals and amounts too, for readers that keep numbers as
// doubles would change their digits. Null is null.
namespace kap::cli {
namespace {

using Json = nlohmann::ordered_json;

std::string jsonText(const std::string& text) {
    return Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
}

// Makes a JSON text of what stands from `start` on.
void quoteForJson(std::string& text, std::size_t start) {
    const auto needsMore = [](char unit) {
        return static_cast<unsigned char>(unit) < ' ' || unit == '"' || unit == '\\' ||
               static_cast<unsigned char>(unit) >= 0x7F;
    };
    if (std::any_of(text.begin() + static_cast<std::ptrdiff_t>(start), text.end(), needsMore)) {
        const std::string quoted = jsonText(text.substr(start));
        text.replace(start, std::string::npos, quoted);
        return;
    }
    text.insert(start, 1, '"');
    text += '"';
}

// A name for each column, none twice: "Nome", "Nome_2"; one without a name is "column3" after its
// place.
std::string distinctName(std::string name, const std::vector<std::string>& before) {
    if (name.empty()) {
        name = "column" + plain::text(before.size() + 1);
    }
    const std::string first = name;
    for (int number = 2; std::ranges::find(before, name) != before.end(); ++number) {
        name = first + "_" + plain::text(number);
    }
    return name;
}

class JsonRows : public StreamedAnswers {
public:
    using StreamedAnswers::StreamedAnswers;

protected:
    void beginRows() {
        std::vector<std::string> names;
        keys_.clear();
        kinds_.clear();
        for (const Column& column : columns()) {
            names.push_back(distinctName(column.name, names));
            keys_.push_back((keys_.empty() ? "{" : ",") + jsonText(names.back()) + ":");
            kinds_.push_back(kindOf(column.type));
        }
    }
    void object(std::string& text, const migrate::RowTexts& values) const {
        for (std::size_t i = 0; i < keys_.size(); ++i) {
            text += keys_[i];
            const std::size_t start = text.size();
            if (!values.append(text, i)) {
                text += "null";
            } else if (kinds_[i] == Kind::Truth) {
                const bool yes = text[start] == '1';
                text.replace(start, std::string::npos, yes ? "true" : "false");
            } else if (kinds_[i] == Kind::Text) {
                quoteForJson(text, start);
            }
        }
        text += '}';
    }

private:
    enum class Kind : unsigned char { Number, Truth, Text };
    static Kind kindOf(ado::DataTypeEnum type) {
        switch (type) {
            case ado::DataTypeEnum::adBoolean:
                return Kind::Truth;
            case ado::DataTypeEnum::adInteger:
            case ado::DataTypeEnum::adSmallInt:
            case ado::DataTypeEnum::adUnsignedTinyInt:
            case ado::DataTypeEnum::adSingle:
            case ado::DataTypeEnum::adDouble:
                return Kind::Number;
            default:
                return Kind::Text;
        }
    }

    std::vector<std::string> keys_;  // with what stands before and behind
    std::vector<Kind> kinds_;
};

class JsonAnswers final : public JsonRows {
public:
    using JsonRows::JsonRows;

private:
    void begin(std::string& text, bool /*first*/) override {
        beginRows();
        Json described = Json::array();
        for (const Column& column : columns()) {
            described.push_back(
                {{"name", column.name}, {"type", column.typeName}, {"size", column.size}});
        }
        text += R"({"columns":)" + described.dump() + R"(,"rows":[)";
        firstRow_ = true;
    }
    void row(std::string& text, const migrate::RowTexts& values) override {
        text += firstRow_ ? "" : ",";
        firstRow_ = false;
        object(text, values);
    }
    void end(std::string& text, std::int64_t, std::optional<std::int64_t> written) override {
        text += R"(],"rowsAffected":)" + (written ? plain::text(*written) : "null") + "}\n";
    }
    void breakOff(std::string& text) override {
        text += "],\"rowsAffected\":null,\"complete\":false}\n";
    }
    void count(std::string& text, std::int64_t written) override {
        text += R"({"columns":[],"rows":[)";
        end(text, 0, written);
    }

    bool firstRow_ = true;
};

class JsonLineAnswers final : public JsonRows {
public:
    using JsonRows::JsonRows;

private:
    void begin(std::string& /*text*/, bool /*first*/) override { beginRows(); }
    void row(std::string& text, const migrate::RowTexts& values) override {
        object(text, values);
        text += '\n';
    }
};

}  // namespace

std::unique_ptr<AnswerWriter> jsonAnswers(std::ostream& out) {
    return std::make_unique<JsonAnswers>(out);
}

std::unique_ptr<AnswerWriter> jsonLineAnswers(std::ostream& out) {
    return std::make_unique<JsonLineAnswers>(out);
}

}  // namespace kap::cli
