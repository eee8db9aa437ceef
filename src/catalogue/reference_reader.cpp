#include "catalogue/reference_reader.hpp"

#include <stdexcept>

#include <kaputil/automation/plain_text.hpp>

#include "base/ascii.hpp"

namespace kap {
namespace {

constexpr std::string_view kBlanks = " \t\r";

class ReferenceReader {
public:
    ReferenceReader(std::string_view text, DocumentationLanguage language)
        : rest_(text), language_(language) {}

    ClassDocumentation read() {
        while (!rest_.empty()) {
            readLine(nextLine());
        }
        endBlock();
        return std::move(made_);
    }

private:
    // What the texts that come are about.
    enum class Place : std::uint8_t { Nowhere, Body, Parameter, Value, Result, Error, Script };

    [[noreturn]] void refuse(const std::string& why) const {
        throw std::invalid_argument("line " + plain::text(line_) + ": " + why);
    }

    std::string_view nextLine() {
        const std::size_t end = rest_.find('\n');
        const std::string_view line = rest_.substr(0, end);
        rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
        ++line_;
        return line;
    }

    void readLine(std::string_view line) {
        const bool indented = line.starts_with("    ");
        if (place_ == Place::Script && (indented || trimmed(line, kBlanks).empty())) {
            addScriptLine(indented ? line.substr(4) : std::string_view());
            return;
        }
        const std::string_view words = trimmed(line, kBlanks);
        if (!words.empty() && !readHeading(words) && !readText(words)) {
            goOn(words);
        }
    }

    bool readHeading(std::string_view words) {
        if (words.starts_with("# ")) {
            endBlock();
            begin(made_.itself);
        } else if (words.starts_with("## ")) {
            endBlock();  // before the members move
            made_.members.emplace_back(words.substr(3), Documentation());
            begin(made_.members.back().second);
        } else if (words.starts_with("- ")) {
            enter(Place::Parameter);
            current().parameters.push_back({std::string(words.substr(2)), {}, {}});
            values_ = &current().parameters.back().values;
        } else if (words.starts_with("= ")) {
            enter(Place::Value);
            values_->push_back({std::string(words.substr(2)), {}});
        } else if (words == "result") {
            enter(Place::Result);
            values_ = &current().values;
        } else if (words == "error" || words.starts_with("error ")) {
            enter(Place::Error);
            current().errors.push_back({errorNumber(words.substr(5)), {}});
        } else if (words == "example" || words == "setup") {
            enter(Place::Script);
            script_ = words == "setup" ? &made_.setup : &current().example;
        } else {
            return false;
        }
        return true;
    }

    std::optional<std::int32_t> errorNumber(std::string_view words) const {
        const std::string_view digits = trimmed(words, kBlanks);
        if (digits.empty()) {
            return std::nullopt;
        }
        const auto number = plain::readInt(digits);
        if (!number) {
            refuse("an error's number is a number");
        }
        return *number;
    }

    bool readText(std::string_view words) {
        const bool english = words.starts_with("en:");
        if (!english && !words.starts_with("it:")) {
            return false;
        }
        if (place_ == Place::Nowhere || place_ == Place::Script) {
            refuse("a text of nothing");
        }
        ++texts_[english ? 0 : 1];
        const auto wanted =
            english ? DocumentationLanguage::English : DocumentationLanguage::Italian;
        text_ = wanted == language_ ? &newText() : &other_;
        *text_ = trimmed(words.substr(3), kBlanks);
        return true;
    }

    // Where a text of the current place goes; a body has several.
    std::string& newText() {
        switch (place_) {
            case Place::Parameter:
                return current().parameters.back().text;
            case Place::Value:
                return values_->back().text;
            case Place::Result:
                return current().result;
            case Place::Error:
                return current().errors.back().text;
            default:
                return current().paragraphs.emplace_back();
        }
    }

    void goOn(std::string_view words) {
        if (text_ == nullptr) {
            refuse("a line that belongs to nothing");
        }
        *text_ += ' ';
        *text_ += words;
    }

    void addScriptLine(std::string_view line) {
        script_->append(line);
        script_->push_back('\n');
    }

    void begin(Documentation& documentation) {
        current_ = &documentation;
        values_ = &documentation.values;
        place_ = Place::Body;
    }

    void enter(Place place) {
        if (current_ == nullptr) {
            refuse("the file begins with the name of its class");
        }
        endBlock();
        place_ = place;
    }

    // Both languages tell as much of every place.
    void endBlock() {
        if (texts_[0] != texts_[1] ||
            (texts_[0] == 0 && place_ != Place::Nowhere && place_ != Place::Script)) {
            refuse("what ends here is not told in both languages");
        }
        if (place_ == Place::Script) {
            script_->erase(script_->find_last_not_of('\n') + 1);
            script_->push_back('\n');
        }
        texts_[0] = texts_[1] = 0;
        text_ = nullptr;
    }

    [[nodiscard]] Documentation& current() const { return *current_; }

    std::string_view rest_;
    DocumentationLanguage language_;
    ClassDocumentation made_;
    Documentation* current_ = nullptr;
    std::vector<DocumentedValue>* values_ = nullptr;
    std::string* script_ = nullptr;
    std::string* text_ = nullptr;
    std::string other_;  // of the language that is not wanted
    Place place_ = Place::Nowhere;
    int texts_[2] = {0, 0};
    int line_ = 0;
};

}  // namespace

ClassDocumentation readReference(std::string_view text, DocumentationLanguage language) {
    return ReferenceReader(text, language).read();
}

}  // namespace kap
