#include "engine/executor/function_arguments.hpp"
#include "engine/script/session_functions.hpp"
#include "tsql/server_error.hpp"

// What NEXT VALUE FOR draws, called by SQLite in the middle of a statement.
namespace kap::engine {

void SessionFunctions::provideSequences() {
    provide("kap_next_value", 1, &SessionFunctions::nextValue);
    provide("kap_same_value", 1, &SessionFunctions::sameValue);
    provide("kap_ranked_value", 2, &SessionFunctions::rankedValue);
}

const Sequence& SessionFunctions::sequence(const std::string& name) const {
    const Sequence* found = catalogue_.findSequence(name);
    if (found == nullptr) throw tsql::ServerError(tsql::Message::InvalidObject, {name});
    return *found;
}

Value SessionFunctions::nextValue(const Arguments& arguments) {
    return counters_.draw(sequence(textAt(arguments, 0))).last;
}

// The number that was drawn for the row already.
Value SessionFunctions::sameValue(const Arguments& arguments) {
    return counters_.currentIdentity(sequence(textAt(arguments, 0)).name);
}

// The number of the row that stands at a place from 1 in the order of OVER.
Value SessionFunctions::rankedValue(const Arguments& arguments) {
    const Sequence& drawn = sequence(textAt(arguments, 0));
    const auto place = static_cast<std::size_t>(wholeAt(arguments, 1));
    std::vector<std::int64_t>& numbers = state_.rankedNumbers[drawn.name];
    while (numbers.size() < place) {
        numbers.push_back(counters_.draw(drawn).last);
    }
    return numbers[place - 1];
}

}  // namespace kap::engine
