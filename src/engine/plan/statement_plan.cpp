#include "engine/plan/statement_plan.hpp"

namespace kap::engine {
namespace {

// A failure tells of the table that a statement writes or makes.
struct FailureContext {
    WriteContext operator()(const QueryPlan& /*plan*/) const { return {}; }
    WriteContext operator()(const AssignmentPlan& /*plan*/) const { return {}; }
    WriteContext operator()(const WritePlan& plan) const { return writing(plan); }
    WriteContext operator()(const MergePlan& plan) const { return writing(plan); }
    WriteContext operator()(const InsteadPlan& plan) const { return writing(plan); }
    WriteContext operator()(const CreateTablePlan& plan) const {
        return {"", plan.created.table.name, {}};
    }
    WriteContext operator()(const SelectIntoPlan& plan) const { return (*this)(plan.table); }
    WriteContext operator()(const CreateIndexPlan& plan) const { return {"", plan.table, {}}; }
    WriteContext operator()(const DropTablesPlan& /*plan*/) const { return {}; }
    WriteContext operator()(const DropIndexesPlan& /*plan*/) const { return {}; }
    WriteContext operator()(const TruncatePlan& plan) const { return {"", plan.table, {}}; }

private:
    template <typename Plan>
    static WriteContext writing(const Plan& plan) {
        return {nameOf(plan.verb), plan.target.table, {}};
    }
};

}  // namespace

const char* nameOf(Verb verb) {
    switch (verb) {
        case Verb::Insert:
            return "INSERT";
        case Verb::Update:
            return "UPDATE";
        case Verb::Delete:
            return "DELETE";
        case Verb::Merge:
            break;
    }
    return "MERGE";
}

WriteContext contextOf(const StatementPlan& plan) {
    return std::visit(FailureContext(), plan.kind);
}

}  // namespace kap::engine
