#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kap::engine {

// A procedure that answers with queries of the views by which the database describes itself.
struct CatalogueProcedure {
    std::string_view name;
    std::string query;
    std::vector<std::pair<const char*, const char*>> parameters;  // of the procedure, the query
    bool needsFirst = false;
    bool asksOfObject = false;  // the first argument is the name of something that must be there
};

// sp_help and its kin.
[[nodiscard]] const std::vector<CatalogueProcedure>& helpProcedures();

}  // namespace kap::engine
